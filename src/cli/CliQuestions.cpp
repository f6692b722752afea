#include "CliQuestions.h"

#include <QByteArray>

#include <atomic>
#include <cerrno>
#include <cstdio>

#include <poll.h>
#include <unistd.h>

namespace {

std::atomic<bool> gAsking{false};
// The input has ended: every later question gets the safe answer unread.
std::atomic<bool> gEndOfInput{false};

int codeOf(const QStringList& buttons, const QString& name) {
    for (qsizetype i = 0; i < buttons.size(); ++i)
        if (buttons.at(i).compare(name, Qt::CaseInsensitive) == 0)
            return TarnAlert::kFirstButton + int(i);
    return TarnAlert::kNoAnswer;
}

QString oneLine(const QString& text) {
    QString out = text;
    out.replace(QLatin1Char('\n'), QLatin1Char(' '));
    return out;
}

}  // namespace

bool CliQuestions::policyFromWord(const QString& word, Policy* policy) {
    if (word == QLatin1String("no"))
        *policy = Policy::No;
    else if (word == QLatin1String("yes"))
        *policy = Policy::Yes;
    else if (word == QLatin1String("all"))
        *policy = Policy::All;
    else
        return false;
    return true;
}

CliQuestions::CliQuestions(Policy policy) : policy_(policy) {
    TarnAlert::setPresenter([policy](const TarnAlert::Request& request) {
        if (policy == Policy::Prompt && request.buttons.size() > 1) return prompt(request);
        int answer = automaticAnswer(policy, request);
        const QString chosen = answer >= TarnAlert::kFirstButton &&
                                       answer - TarnAlert::kFirstButton < request.buttons.size()
                                   ? request.buttons.at(answer - TarnAlert::kFirstButton)
                                   : QStringLiteral("(no answer)");
        std::fprintf(stderr, "\n%s: %s -> %s\n", qPrintable(oneLine(request.message)),
                     qPrintable(request.detail), qPrintable(chosen));
        std::fflush(stderr);
        return answer;
    });
}

CliQuestions::~CliQuestions() {
    TarnAlert::setPresenter({});
}

int CliQuestions::automaticAnswer(Policy policy, const TarnAlert::Request& request) {
    const QStringList& buttons = request.buttons;
    if (buttons.size() == 1) return TarnAlert::kFirstButton;
    // "Ok" keeps error messages coming: every one is printed.
    int ok = codeOf(buttons, QStringLiteral("Ok"));
    if (request.form == TarnAlert::Form::OkDoNotShowAgain && ok) return ok;
    switch (policy) {
        case Policy::Yes:
            return codeOf(buttons, QStringLiteral("Yes"));
        case Policy::All:
            if (int all = codeOf(buttons, QStringLiteral("Yes to All"))) return all;
            return codeOf(buttons, QStringLiteral("Yes"));
        case Policy::No:
        case Policy::Prompt:
            break;
    }
    if (int no = codeOf(buttons, QStringLiteral("No"))) return no;
    return codeOf(buttons, QStringLiteral("Cancel"));
}

int CliQuestions::safeAnswer(const TarnAlert::Request& request) {
    if (int answer = automaticAnswer(Policy::No, request)) return answer;
    if (int skip = codeOf(request.buttons, QStringLiteral("Skip"))) return skip;
    return codeOf(request.buttons, QStringLiteral("Skip All"));
}

bool CliQuestions::isAsking() {
    return gAsking;
}

// End of input answers the button that keeps everything as it is.
int CliQuestions::endOfInputAnswer(const TarnAlert::Request& request) {
    const int safe = safeAnswer(request);
    std::fprintf(
        stderr, "(end of input) -> %s\n",
        safe ? qPrintable(request.buttons.at(safe - TarnAlert::kFirstButton)) : "(no answer)");
    return safe;
}

int CliQuestions::prompt(const TarnAlert::Request& request) {
    gAsking = true;
    struct Done {
        ~Done() { gAsking = false; }
    } done;
    std::fprintf(stderr, "\n%s\n%s\n", qPrintable(request.message), qPrintable(request.detail));
    if (gEndOfInput) return endOfInputAnswer(request);
    for (qsizetype i = 0; i < request.buttons.size(); ++i)
        std::fprintf(stderr, "  [%lld] %s\n", static_cast<long long>(i + 1),
                     qPrintable(request.buttons.at(i)));
    QByteArray line;
    for (;;) {
        std::fprintf(stderr, "choice (1-%lld): ", static_cast<long long>(request.buttons.size()));
        std::fflush(stderr);
        line.clear();
        // Read with a timeout so that a cancelled action stops waiting.
        for (;;) {
            if (request.abandoned && request.abandoned()) {
                std::fputs("\n", stderr);
                return TarnAlert::kNoAnswer;
            }
            struct pollfd p {
                STDIN_FILENO, POLLIN, 0
            };
            int ready = ::poll(&p, 1, 100);
            if (ready <= 0) continue;
            char c = 0;
            ssize_t n = ::read(STDIN_FILENO, &c, 1);
            if (n < 0 && errno == EINTR) continue;
            if (n <= 0) {
                gEndOfInput = true;
                return endOfInputAnswer(request);
            }
            if (c == '\n') break;
            line.append(c);
        }
        const QString text = QString::fromLocal8Bit(line).trimmed();
        bool isNumber = false;
        int number = text.toInt(&isNumber);
        if (isNumber && number >= 1 && number <= request.buttons.size())
            return TarnAlert::kFirstButton + number - 1;
        if (int code = codeOf(request.buttons, text)) return code;
    }
}
