#include <gtest/gtest.h>

#include <cmath>

#include "items/TarnFileSize.h"

// Sizes are divided only while strictly above 1000 (or 1024), and huge values
// stay in the last unit.
TEST(FileSize, TextAtTheBoundaries) {
    struct Case {
        double bytes;
        const char* decimal;
        const char* binary;
    };
    const Case cases[] = {
        {0, "0 byte", "0 byte"},
        {1, "1 byte", "1 byte"},
        {2, "   2 bytes", "   2 bytes"},
        {999, " 999 bytes", " 999 bytes"},
        {1000, "1000.00 bytes", "1000 bytes"},
        {1001, "1.00 kB", "1001 bytes"},
        {1024, "1.02 kB", "1024.00 bytes"},
        {1025, "1.02 kB", "1.00 KiB"},
        {1e6, "1000.00 kB", "976.56 KiB"},
        {1e6 + 1, "1.00 MB", "976.56 KiB"},
        {1048577, "1.05 MB", "1.00 MiB"},
        {1.5e12, "1.50 TB", "1.36 TiB"},
        {-5, "  -5 bytes", "  -5 bytes"},
        {std::ldexp(1.0, 64), "18.45 EB", "16.00 EiB"},
        {std::ldexp(1.0, 80), "1.21 YB", "1024.00 ZiB"},
        {3e30, "3000000.00 YB", "2481541.84 YiB"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.bytes);
        EXPECT_EQ(TarnFileSize::toHumanBytes(c.bytes), c.decimal);
        EXPECT_EQ(TarnFileSize::toHumanBytes_2(c.bytes), c.binary);
    }
    EXPECT_EQ(TarnFileSize(1001).description(), "1.00 kB");
}
