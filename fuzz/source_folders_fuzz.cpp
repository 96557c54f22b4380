// "NASConf.Dat": rows that were read are written so that they read as the same rows.
#include "fuzz_input.h"
#include "store/source_folder_format.h"
#include "support/latin1_code_page.h"
#include "support/problem.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const TLatin1CodePage codePage;
    try {
        const auto rows = ReadSourceFolderRows(AsBytes(data, size), codePage);
        Require(ReadSourceFolderRows(WriteSourceFolderRows(rows, codePage), codePage) == rows);
    } catch (const EProblem&) {
    }
    return 0;
}
