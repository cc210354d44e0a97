// HTML documents of body files, as plain text: within seconds, whatever they nest or repeat.
#include "services/html_text.h"

#include "fuzz/fuzz_target.h"
#include "services/byte_text.h"
#include "services/html_measure.h"

#include <QElapsedTimer>

namespace {

// The document is a library's: the fuzzer does not see its ways, and what it cannot bear is seldom a single tag. So a
// short input is also read many times over, behind its first part that stands once.
constexpr int longest_repeated = 96;
constexpr int repetitions[] = {200, 3000};
constexpr qint64 most_seconds = 20; // with sanitizers in a busy machine

void read(const QByteArray &content)
{
    const QString html = text_of_unknown_encoding(content);
    QElapsedTimer timer;
    timer.start();
    const html_text converted = plain_text_of_html(html);
    require(timer.elapsed() < most_seconds * 1000, "a document takes seconds");
    require(converted.excess == excess_of(html), "what is measured twice is the same");
    const int longest = static_cast<int>(measure_html(html).list_items) * 16 + html.size() * 4 + 16;
    require(converted.text.size() <= longest, "the text is about as long as the document at most");
}

} // namespace

void fuzz_one(const QByteArray &input)
{
    read(input);
    if (input.size() <= longest_repeated) {
        const int bar = input.indexOf('|');
        for (const int count : repetitions) {
            read(input.left(bar + 1) + input.mid(bar + 1).repeated(count));
        }
    }
}
