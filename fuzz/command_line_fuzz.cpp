// The words of the command line, one a line.
#include <sstream>

#include "app/command_line.h"
#include "fuzz_input.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    std::vector<std::wstring> words;
    std::wistringstream lines(AsText(data, size));
    for (std::wstring word; std::getline(lines, word);) {
        words.push_back(word);
    }
    const TCommandLine parsed = ParseCommandLine(words);
    Require(parsed.copy || (!parsed.msgOff && !parsed.shutDown));
    return 0;
}
