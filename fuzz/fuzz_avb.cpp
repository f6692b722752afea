// Avid bins: the reference scans and the chunk dump.
#include <cstddef>
#include <cstdint>

#include "log/xConsole.h"
#include "readers/AVBFile.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    AVBFile bin;
    if (bin.dataWithBytes(QByteArray(reinterpret_cast<const char*>(data), qsizetype(size)))) {
        for (const auto& item : bin.getUIDS()) (void)item->getFileUIDString();
        (void)bin.getAMAUIDSold();
        (void)bin.getAMAUIDS();
    }
    (void)xConsole::hexlifyRawBytes(data, qsizetype(size < 64 ? size : 64));
    // The log's delivery thread frees what was logged: wait for it, so each run
    // frees what it allocated (else every run looks like a leak to libFuzzer),
    // and keep the log from growing over the run.
    xConsole::sharedInstance()->flush();
    xConsole::sharedInstance()->Reset();
    return 0;
}
