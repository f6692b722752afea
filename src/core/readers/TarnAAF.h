#pragma once

#include <QByteArray>
#include <QList>

#include "readers/TarnMediaReader.h"

// AAF files are recognised and refused: an AAF file never yields information.
class TarnAAF : public TarnMediaReader {
  public:
    unsigned getType() const override { return 3; }
    // Logs "AAf file : open" and returns false, always.
    bool openFile(const QString& path, TarnProgressIndicator* indicator) override;

    TarnProgressIndicator* localWorkInProgressIndicator = nullptr;

  private:
    // Declared for a future reader; nothing fills them.
    QByteArray fileData_;
    QList<QByteArray> klvItems_;
};
