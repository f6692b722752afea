#include "TestSupport.h"

#include "log/xConsole.h"

namespace testsupport {

LogCapture::LogCapture() : start_(xConsole::sharedInstance()->contents().size()) {}

QString LogCapture::text() const {
    return xConsole::sharedInstance()->contents().mid(start_);
}

}  // namespace testsupport
