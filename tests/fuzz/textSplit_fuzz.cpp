// Splitting of a text. Input: the delimiter, then the text.
#include "foundation/utils.h"
#include "fuzzing.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzzing::Input input(data, size);
    const char delimiter = input.number<char>();
    const std::string text = std::string(input.rest().c_str());
    const std::vector<std::string> pieces = QVR::utils::split(text.c_str(), delimiter);

    std::string joined;
    for (const std::string& piece : pieces) {
        fuzzing::require(piece.find(delimiter) == std::string::npos, "pieces have no delimiter");
        joined += (&piece == pieces.data() ? "" : std::string(1, delimiter)) + piece;
    }
    fuzzing::require(joined == text, "the pieces make up the text");
    return 0;
}
