#include <gtest/gtest.h>

#include <cmath>

#include "items/TarnFileSize.h"

TEST(FileSize, DecimalTextAtTheBoundaries) {
    EXPECT_EQ(TarnFileSize::toHumanBytes(0), "0 byte");
    EXPECT_EQ(TarnFileSize::toHumanBytes(1), "1 byte");
    EXPECT_EQ(TarnFileSize::toHumanBytes(2), "   2 bytes");
    EXPECT_EQ(TarnFileSize::toHumanBytes(999), " 999 bytes");
    // Divided only while strictly above 1000.
    EXPECT_EQ(TarnFileSize::toHumanBytes(1000), "1000.00 bytes");
    EXPECT_EQ(TarnFileSize::toHumanBytes(1001), "1.00 kB");
    EXPECT_EQ(TarnFileSize::toHumanBytes(1e6), "1000.00 kB");
    EXPECT_EQ(TarnFileSize::toHumanBytes(1e6 + 1), "1.00 MB");
    EXPECT_EQ(TarnFileSize::toHumanBytes(1.5e12), "1.50 TB");
    EXPECT_EQ(TarnFileSize::toHumanBytes(-5), "  -5 bytes");
    EXPECT_EQ(TarnFileSize::toHumanBytes(double(UINT64_MAX)), "18.45 EB");
}

TEST(FileSize, HugeValuesStayInTheLastUnit) {
    EXPECT_EQ(TarnFileSize::toHumanBytes(2e24), "2.00 YB");
    EXPECT_EQ(TarnFileSize::toHumanBytes(3e30), "3000000.00 YB");
    EXPECT_EQ(TarnFileSize::toHumanBytes_2(std::ldexp(1.0, 100)), "1048576.00 YiB");
}

TEST(FileSize, BinaryTextAtTheBoundaries) {
    EXPECT_EQ(TarnFileSize::toHumanBytes_2(0), "0 byte");
    EXPECT_EQ(TarnFileSize::toHumanBytes_2(1), "1 byte");
    EXPECT_EQ(TarnFileSize::toHumanBytes_2(999), " 999 bytes");
    EXPECT_EQ(TarnFileSize::toHumanBytes_2(1000), "1000 bytes");
    EXPECT_EQ(TarnFileSize::toHumanBytes_2(1001), "1001 bytes");
    EXPECT_EQ(TarnFileSize::toHumanBytes_2(1024), "1024.00 bytes");
    EXPECT_EQ(TarnFileSize::toHumanBytes_2(1025), "1.00 KiB");
    EXPECT_EQ(TarnFileSize::toHumanBytes_2(1e6), "976.56 KiB");
    EXPECT_EQ(TarnFileSize::toHumanBytes_2(1048576), "1024.00 KiB");
    EXPECT_EQ(TarnFileSize::toHumanBytes_2(1048577), "1.00 MiB");
    EXPECT_EQ(TarnFileSize::toHumanBytes_2(std::ldexp(1.0, 80)), "1024.00 ZiB");
}

TEST(FileSize, ValueKeepsTheCountAndTheDecimalText) {
    TarnFileSize size(1001);
    EXPECT_EQ(size.filesize(), 1001.0);
    EXPECT_EQ(size.humanBytes(), "1.00 kB");
    EXPECT_EQ(size.description(), "1.00 kB");
}
