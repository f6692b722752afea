#include "items/TarnFileSize.h"

#include <array>

namespace {

// Decimal steps divide by 1000; binary steps multiply by 1/1024 (exact).
template <std::size_t N>
QString human(double value, bool binary, const std::array<const char*, N>& units) {
    if (value == 0) return QStringLiteral("0 byte");
    if (value == 1) return QStringLiteral("1 byte");
    const double step = binary ? 1024.0 : 1000.0;
    if (value < step) return QString::asprintf("%4.0f %s", value, units[0]);
    std::size_t unit = 0;
    while (value > step && unit + 1 < N) {
        if (binary) {
            value *= 1.0 / 1024.0;
        } else {
            value /= 1000.0;
        }
        ++unit;
    }
    return QString::asprintf("%4.2f %s", value, units[unit]);
}

}  // namespace

TarnFileSize::TarnFileSize(double size) : filesize_(size), humanBytes_(toHumanBytes(size)) {}

QString TarnFileSize::toHumanBytes(double size) {
    static const std::array<const char*, 9> units = {"bytes", "kB", "MB", "GB", "TB",
                                                     "PB",    "EB", "ZB", "YB"};
    return human(size, false, units);
}

QString TarnFileSize::toHumanBytes_2(double size) {
    static const std::array<const char*, 9> units = {"bytes", "KiB", "MiB", "GiB", "TiB",
                                                     "PiB",   "EiB", "ZiB", "YiB"};
    return human(size, true, units);
}
