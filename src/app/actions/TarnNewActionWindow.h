#pragma once

#include <QDialog>
#include <QList>

#include <optional>
#include <vector>

#include "actions/TarnActionOptions.h"

class QAbstractButton;
class QCheckBox;
class QLabel;
class QLineEdit;
class QPushButton;
class QRadioButton;

// The sheet in which the user sets up one action for the selected media
// items: Copy, Move or Delete, a destination folder, the folder options and
// "I'm sure". It only edits `ActionProperties`; "GO" ends the sheet with the
// accept code 1 once the rules allow it (else an alert says why and the sheet
// stays), "Cancel" with 0. Whoever opened it hands the options to the queue.
//
// Every control carries its name as object and accessible name ("RadioCopy",
// "CheckImSure", "destinationText", "GO", ...).
class TarnNewActionWindow : public QDialog {
    Q_OBJECT
  public:
    static constexpr int kAccept = 1;

    explicit TarnNewActionWindow(const QList<TarnItemPtr>& items, QWidget* parent = nullptr);
    TarnNewActionWindow(const std::vector<TarnItemPtr>& items, QWidget* parent = nullptr);

    const TarnActionOptions& ActionProperties() const { return properties_; }
    QString summary() const;

    // The controls' actions, as the controls call them.
    void RadioChanged(QAbstractButton* sender);
    void checkSetFolders(bool on);
    void checkSetMXF(bool on);
    void checkSetKeepOriginalFolders(bool on);
    void checkSetKeepPMR(bool on);
    void checkSetSure(bool on);
    void DestinationEditingEnd();
    // Opens the folder chooser (a sheet on this sheet).
    void SelectDestination();
    // What choosing a folder does: the field, the option and the summary.
    void chooseDestination(const QString& folder);
    void PushGo();
    void PushCancel();

  private:
    void buildControls();
    void layOutControls();
    void windowDidLoad();
    void updateStatusText();
    template <typename Control>
    Control* named(Control* control, const QString& name);

    TarnActionOptions properties_;
    std::optional<quint64> itemsTotalSize_;
    QRadioButton* radioCopy_ = nullptr;
    QRadioButton* radioMove_ = nullptr;
    QRadioButton* radioDelete_ = nullptr;
    QCheckBox* checkProjects_ = nullptr;
    QCheckBox* checkMXF_ = nullptr;
    QCheckBox* checkKeepOriginalFolders_ = nullptr;
    QCheckBox* checkKeepPMR_ = nullptr;
    QCheckBox* checkImSure_ = nullptr;
    QLabel* summaryText_ = nullptr;
    QLineEdit* destinationText_ = nullptr;
    QPushButton* select_ = nullptr;
    QPushButton* go_ = nullptr;
    QPushButton* cancel_ = nullptr;
};
