#pragma once

#include <functional>

#include <QList>
#include <QObject>
#include <QPointer>

#include <vector>

#include "actions/TarnActionManager.h"
#include "actions/TarnQueueWindow.h"

class QWidget;
class TarnNewActionWindow;

// The main window's action commands: the new-action sheet on the selected
// items, handing its options to the queue, and the queue sheet. The
// controller keeps one of these next to its action manager; the manager's
// wish to show the queue (after every new action) shows it over the window.
class TarnActionCommands : public QObject {
    Q_OBJECT
  public:
    TarnActionCommands(TarnActionManager* manager, QWidget* window, QObject* parent = nullptr);
    ~TarnActionCommands() override;

    // The sheet guard (the alert sound, and nothing else, while the window
    // shows a sheet), then the new-action sheet on the items. "GO" passes
    // its options on to ContinueActionSetup. Returns the sheet, or null.
    TarnNewActionWindow* NewAction(const QList<TarnItemPtr>& selectedItems);
    TarnNewActionWindow* NewAction(const std::vector<TarnItemPtr>& selectedItems);
    // Queues the action (the queue then shows itself).
    TarnActionManager::ActionPtr ContinueActionSetup(const TarnActionOptions& properties);
    // The queue as a sheet over the window.
    void ShowQueue();
    // Where the media folders of the scan come from: an action acts only on
    // files inside them (options that name none get these).
    void setMediaFolderRoots(std::function<QStringList()> roots) { roots_ = std::move(roots); }
    // The queue window, made on first use.
    TarnQueueWindow* Queue();
    TarnActionManager* manager() const { return manager_; }

  private:
    std::function<QStringList()> roots_;
    TarnActionManager* manager_;
    QPointer<QWidget> window_;
    QPointer<TarnQueueWindow> queue_;
};
