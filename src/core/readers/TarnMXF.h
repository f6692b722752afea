#pragma once

#include "TarnMediaReader.h"

class TarnMXF : public TarnMediaReader {
public:
    unsigned getType() const override { return 4; }
    bool openFile(const QString& path, TarnProgressIndicator* indicator) override;
};
