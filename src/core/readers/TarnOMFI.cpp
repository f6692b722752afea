#include "TarnOMFI.h"

// Not yet written: refuses every file.
bool TarnOMFI::openFile(const QString&, TarnProgressIndicator*) { return false; }
