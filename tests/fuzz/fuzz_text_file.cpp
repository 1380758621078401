// The bytes of text files, in whatever encoding.
#include "app/base/text_file.h"
#include "tests/fuzz/fuzz.h"

using namespace quillon;
using namespace quillon::testing;

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const QByteArrayView bytes(data, static_cast<qsizetype>(size));
    const QString text = decodeTextFile(bytes);
    // No encoding makes more than one character of a byte.
    require(text.size() <= bytes.size() + 1, "a text has no more characters than bytes");
    require(decodeTextFile(bytes) == text, "the same bytes are the same text");
    return 0;
}
