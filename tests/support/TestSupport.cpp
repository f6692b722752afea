#include "TestSupport.h"

#include <ftw.h>

#include <cstdio>

#include "log/xConsole.h"
#include "support/TarnFileName.h"

namespace testsupport {

LogCapture::LogCapture() : start_(xConsole::sharedInstance()->contents().size()) {}

QString LogCapture::text() const {
    return xConsole::sharedInstance()->contents().mid(start_);
}

TempDir::~TempDir() {
    if (!dir_.isValid()) return;
    // Depth first, links not followed: every entry goes before its folder.
    ::nftw(
        TarnFileName::encode(dir_.path()).constData(),
        [](const char* path, const struct stat*, int, struct FTW*) {
            std::remove(path);
            return 0;
        },
        16, FTW_DEPTH | FTW_PHYS);
}

}  // namespace testsupport
