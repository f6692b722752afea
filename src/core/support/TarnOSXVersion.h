#pragma once

#include <QString>

// The running system's version text, logged at start-up as "OSXVersion:%@":
// the product version on macOS ("14.2"), the distribution's pretty name
// elsewhere ("Debian GNU/Linux 12 (bookworm)").
class TarnOSXVersion {
  public:
    static QString description();
};
