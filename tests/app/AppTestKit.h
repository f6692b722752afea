#pragma once

// Shared pieces of the app suite: answering the message boxes from the test
// (through the presenter's hook, not by clicks on the screen) and waiting
// for the GUI thread's events.

#include <QAbstractButton>
#include <QCoreApplication>
#include <QMessageBox>
#include <QString>
#include <QStringList>

#include <functional>

#include <gtest/gtest.h>

#include "../actions/ActionTestKit.h"  // files, items and readable texts
#include "alerts/TarnAlertPresenter.h"

namespace apptest {

// Runs the GUI thread's events until `done` holds (no time limit: a test
// that never gets there is stopped by ctest's timeout).
inline void spinUntil(const std::function<bool()>& done) {
    while (!done()) QCoreApplication::processEvents(QEventLoop::AllEvents, 20);
}

// The button of a box with that text, or null.
inline QAbstractButton* buttonNamed(QMessageBox* box, const QString& text) {
    for (QAbstractButton* button : box->buttons())
        if (button->text() == text) return button;
    return nullptr;
}

// A presenter whose boxes are answered by a rule: `answer` gets each box's
// request and returns the text of the button to press, or a null string to
// leave the box open. Every box shown is recorded (message, buttons).
class AnsweringPresenter {
  public:
    using Rule = std::function<QString(const TarnAlert::Request&)>;

    explicit AnsweringPresenter(Rule rule = {}) : rule_(std::move(rule)) {
        presenter_.setShownHook([this](QMessageBox* box, const TarnAlert::Request& request) {
            messages_ << request.message;
            details_ << request.detail;
            buttons_ << request.buttons.join(QLatin1Char('|'));
            if (onShown_) onShown_(box, request);
            if (!rule_) return;
            const QString text = rule_(request);
            if (text.isNull()) return;
            QAbstractButton* button = buttonNamed(box, text);
            ASSERT_NE(button, nullptr) << text.toStdString();
            button->click();
        });
    }
    void setRule(Rule rule) { rule_ = std::move(rule); }
    // Also called for every box, before the rule.
    void onShown(TarnAlertPresenter::ShownHook hook) { onShown_ = std::move(hook); }

    TarnAlertPresenter& presenter() { return presenter_; }
    QStringList messages() const { return messages_; }
    QStringList details() const { return details_; }
    QStringList buttons() const { return buttons_; }

  private:
    TarnAlertPresenter presenter_;
    Rule rule_;
    TarnAlertPresenter::ShownHook onShown_;
    QStringList messages_, details_, buttons_;
};

// Presses `text` on every box.
inline AnsweringPresenter::Rule always(const QString& text) {
    return [text](const TarnAlert::Request&) { return text; };
}

}  // namespace apptest
