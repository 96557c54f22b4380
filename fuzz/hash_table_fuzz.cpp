// "Vardeko.dat": a file that is accepted is written back byte for byte when it is kept in its order.
#include "fuzz_input.h"
#include "hashdb/hash_table_format.h"
#include "support/problem.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view bytes = AsBytes(data, size);
    try {
        const THashStore store = ReadHashRecords(bytes);
        std::string written;
        const THashRecordSink sink = [&written](std::string_view piece) {
            written += piece;
            return true;
        };
        Require(WriteHashRecords(store, false, sink));
        const std::string first = written;
        written.clear();
        Require(WriteHashRecords(ReadHashRecords(first), false, sink));
        Require(written == first);
        Require(first.size() == bytes.size());
    } catch (const EProblem&) {
    }
    return 0;
}
