#pragma once

class TarnActionOperation;

// What the engine tells its owner, on the engine's worker thread. Each call
// has an empty default, so a delegate implements only what it needs.
class TarnActionOperationDelegate {
  public:
    virtual ~TarnActionOperationDelegate() = default;
    // The run begins (not sent when the action was cancelled before).
    virtual void TarnActionOperationWillStart(TarnActionOperation*) {}
    // A file's turn begins: itemsDone has just moved on.
    virtual void TarnActionOperationStatusUpdate(TarnActionOperation*) {}
    // The run ended without being cancelled.
    virtual void TarnActionOperationDidFinished(TarnActionOperation*) {}
};
