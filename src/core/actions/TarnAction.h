#pragma once

#include <QMutex>
#include <QObject>
#include <QString>

#include <memory>

#include "actions/TarnActionOperationDelegate.h"
#include "actions/TarnActionOptions.h"

class TarnActionOperation;

// One queued job: it owns its worker (TarnActionOperation), is the worker's
// delegate, and keeps what the job's row in the queue shows: a description,
// a status word ("Waiting", "Running", "Done", "Cancelled") and the progress
// bar's maximum. A view follows the signals (they are emitted on the thread
// that caused the change: connect queued to reach the main thread) or reads
// the current texts.
class TarnAction : public QObject, public TarnActionOperationDelegate {
    Q_OBJECT
  public:
    explicit TarnAction(const TarnActionOptions& options);
    ~TarnAction() override;

    TarnActionOperation* Action_Operation() const { return operation_.get(); }
    std::shared_ptr<TarnActionOperation> operationPtr() const { return operation_; }

    // Whether a row view currently shows this action (set and cleared by the queue).
    bool hasCell() const { return cell_; }
    void setCell(bool attached) { cell_ = attached; }

    void Action_cancel();
    // Fills the row from scratch: description, progress maximum and status.
    void SetStatusText();

    QString descriptionText() const;
    QString statusText() const;
    double progressMaximum() const;

    // The texts, from the worker's numbers.
    QString queuedDescription() const;
    QString progressDescription() const;

    void TarnActionOperationWillStart(TarnActionOperation* operation) override;
    void TarnActionOperationStatusUpdate(TarnActionOperation* operation) override;
    void TarnActionOperationDidFinished(TarnActionOperation* operation) override;

    static QString waitingWord() { return QStringLiteral("Waiting"); }
    static QString runningWord() { return QStringLiteral("Running"); }
    static QString doneWord() { return QStringLiteral("Done"); }
    static QString cancelledWord() { return QStringLiteral("Cancelled"); }

  signals:
    void descriptionChanged(const QString& text);
    void statusChanged(const QString& word);
    void progressMaximumChanged(double maximum);
    // The bar: a value, or indeterminate (the run is over).
    void progressChanged(double value, bool indeterminate);

  private:
    void setStatus(const QString& word);
    void setDescription(const QString& text);
    QString destinationText() const;

    std::shared_ptr<TarnActionOperation> operation_;
    std::atomic<bool> cell_{false};
    mutable QMutex mutex_;
    QString description_ = QStringLiteral(" ");
    QString status_ = waitingWord();
    double maximum_ = 100.0;
};
