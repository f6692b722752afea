// Media folder file indexes: the header and every entry, handed to the item.
#include <cstddef>
#include <cstdint>

#include "log/xConsole.h"
#include "readers/PMRFile.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    PMRFile pmr;
    pmr.dataWithBytes(QByteArray(reinterpret_cast<const char*>(data), qsizetype(size)));
    // Every entry moves the reader on by at least 9 bytes, so this ends.
    while (auto item = pmr.FillItem(std::make_shared<TarnDatabaseItem>())) {
        (void)item->description();
        (void)item->get_DB_ProjectName();
    }
    // The log's delivery thread frees what was logged: wait for it, so each run
    // frees what it allocated (else every run looks like a leak to libFuzzer),
    // and keep the log from growing over the run.
    xConsole::sharedInstance()->flush();
    xConsole::sharedInstance()->Reset();
    return 0;
}
