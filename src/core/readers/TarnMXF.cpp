#include "TarnMXF.h"

// Not yet written: refuses every file.
bool TarnMXF::openFile(const QString&, TarnProgressIndicator*) { return false; }
