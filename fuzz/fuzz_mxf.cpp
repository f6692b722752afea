// libFuzzer entry for the MXF reader: the input becomes the content of an
// in-memory file, which the reader opens by path like any media file.
#include <sys/mman.h>
#include <unistd.h>

#include <cstddef>
#include <cstdint>

#include "items/TarnDatabaseItem.h"
#include "log/xConsole.h"
#include "readers/TarnAvidMXFInfo.h"
#include "readers/TarnMXF.h"

namespace {

int memoryFile() {
    static const int fd = memfd_create("fuzz_mxf", MFD_CLOEXEC);
    return fd;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const int fd = memoryFile();
    if (fd < 0 || ftruncate(fd, 0) != 0) return 0;
    if (size > 0 && pwrite(fd, data, size, 0) != ssize_t(size)) return 0;

    TarnMXF reader;
    reader.openFile(QStringLiteral("/proc/self/fd/%1").arg(fd), nullptr);
    TarnDatabaseItem item;
    reader.addInfoToItem(&item);
    item.checkUUID();

    // The log keeps everything in memory; keep it small over millions of runs.
    static unsigned runs = 0;
    if (++runs % 4096 == 0) xConsole::sharedInstance()->Reset();
    return 0;
}
