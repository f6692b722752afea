#include "bins/BinCommands.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QFileDialog>

#include "database/TarnCore.h"
#include "log/xConsole.h"
#include "status/TarnStatusViewController.h"

BinCommands::BinCommands(TarnCore* core, TarnStatusViewController* status, QObject* parent)
    : QObject(parent), core_(core), status_(status) {}

void BinCommands::setPanelParent(QWidget* window) {
    panelParent_ = window;
}

bool BinCommands::refuseWhileBusy() const {
    if (!status_ || !status_->isRunning()) return false;
    QApplication::beep();
    return true;
}

void BinCommands::openPanel(const std::function<void(const QStringList&)>& confirmed) {
    auto* panel = new QFileDialog(panelParent_);
    panel->setObjectName(QStringLiteral("OpenAVBPanel"));
    panel->setAttribute(Qt::WA_DeleteOnClose);
    panel->setAcceptMode(QFileDialog::AcceptOpen);
    // Files only, several at once, of any type: unlike a drop, the panel
    // does not insist on the ".avb" extension.
    panel->setFileMode(QFileDialog::ExistingFiles);
    panel->setWindowModality(panelParent_ ? Qt::WindowModal : Qt::ApplicationModal);
    connect(panel, &QFileDialog::filesSelected, this, confirmed);
    panel->open();
}

void BinCommands::OpenAVB(int tag) {
    openPanel([this, tag](const QStringList& paths) {
        switch (tag) {
            case 1:
                DoAVBIntersect(paths);
                break;
            case 2:
                DoAVBSubtract(paths);
                break;
            case 3:
                DoAVBAdd(paths);
                break;
            default:
                break;
        }
    });
}

void BinCommands::parseAmaLinksinBin() {
    openPanel([this](const QStringList& paths) { readAmaLinks(paths); });
}

void BinCommands::DoAVBIntersect(const QStringList& binPaths) {
    run(Operation::Intersect, binPaths);
}

void BinCommands::DoAVBSubtract(const QStringList& binPaths) {
    run(Operation::Subtract, binPaths);
}

void BinCommands::DoAVBAdd(const QStringList& binPaths) {
    run(Operation::Add, binPaths);
}

void BinCommands::run(Operation operation, const QStringList& binPaths) {
    behindBigWheel(
        [&] {
            switch (operation) {
                case Operation::Intersect:
                    core_->AVBArray_IntersectWith(binPaths);
                    break;
                case Operation::Subtract:
                    core_->AVBArray_Subtract(binPaths);
                    break;
                case Operation::Add:
                    core_->AVBArray_Add(binPaths);
                    break;
            }
        },
        true);
}

void BinCommands::readAmaLinks(const QStringList& binPaths) {
    behindBigWheel([&] { core_->parseAMAfromAVBs(binPaths); }, false);
}

void BinCommands::behindBigWheel(const std::function<void()>& work, bool reloadTables) {
    if (!core_ || refuseWhileBusy()) return;
    QElapsedTimer clock;
    clock.start();
    TarnStatusWheel* wheel = status_ ? status_->Status_GetBigWheel() : nullptr;
    if (wheel) wheel->startAnimation();
    work();
    TARN_LOG(QString::asprintf("Execution Time: %f", double(clock.nsecsElapsed()) / 1e9));
    if (reloadTables) emit AllTablesReload();
    if (wheel) wheel->stopAnimation();
}
