// The HTML of signatures, as plain text.
#include "fuzz/fuzz_target.h"
#include "macos/signature_text.h"

namespace {

// The document is a library's: the fuzzer does not see its ways, and what it cannot bear is seldom a single tag. So a
// short input is also read many times over.
constexpr int longest_repeated = 48;
constexpr int repetitions = 250;

const std::atomic<bool> not_cancelled{false};
const std::atomic<bool> cancelled{true};

void read(const QByteArray &content)
{
    const std::optional<html_text> converted = plain_text_of_signature(content, not_cancelled);
    require(!converted || converted->text == converted->text.trimmed(), "a signature is trimmed");
}

} // namespace

void fuzz_one(const QByteArray &input)
{
    read(input);
    if (input.size() <= longest_repeated) {
        read(input.repeated(repetitions));
    }
    require(input.isEmpty() || !plain_text_of_signature(input, cancelled), "nothing is read when cancelled");
}
