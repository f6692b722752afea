#pragma once

#include "TarnMediaReader.h"

class TarnOMFI : public TarnMediaReader {
public:
    unsigned getType() const override { return 1; }
    bool openFile(const QString& path, TarnProgressIndicator* indicator) override;
};
