#include "host/terminal.h"

#include <cstdio>

#include <sys/ioctl.h>
#include <unistd.h>

namespace {

bool some_output_lost = false;

QString escape_of(QChar character)
{
    switch (character.unicode()) {
    case '\n':
        return QStringLiteral("\\n");
    case '\r':
        return QStringLiteral("\\r");
    case '\t':
        return QStringLiteral("\\t");
    default:
        break;
    }
    const ushort code = character.unicode();
    return code < 0x80 ? QStringLiteral("\\x%1").arg(code, 2, 16, QLatin1Char('0'))
                       : QStringLiteral("\\u%1").arg(code, 4, 16, QLatin1Char('0'));
}

} // namespace

bool stdout_is_terminal()
{
    static const bool is_terminal = isatty(STDOUT_FILENO) == 1;
    return is_terminal;
}

int terminal_width()
{
    winsize size{};
    return ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0 ? size.ws_col : 80;
}

void print(const QString &text)
{
    const QByteArray bytes = text.toUtf8();
    const auto size = static_cast<size_t>(bytes.size());
    some_output_lost |= std::fwrite(bytes.constData(), 1, size, stdout) != size;
}

void print_line(const QString &text)
{
    print(text + QLatin1Char('\n'));
}

void flush_output()
{
    some_output_lost |= std::fflush(stdout) != 0;
}

bool output_failed()
{
    flush_output();
    return some_output_lost;
}

void print_error(const QString &sentence)
{
    const QByteArray line = QByteArrayLiteral("mail-extract: ") + escaped_for_terminal(sentence).toUtf8() + '\n';
    std::fwrite(line.constData(), 1, static_cast<size_t>(line.size()), stderr);
}

bool is_unsafe_for_terminal(QChar character)
{
    const ushort code = character.unicode();
    return code < 0x20 || (code >= 0x7f && code <= 0x9f)         // C0, DEL, C1
           || code == 0x061c || code == 0x200e || code == 0x200f // direction marks
           || (code >= 0x2028 && code <= 0x202e)                 // line separators, embeddings and overrides
           || (code >= 0x2066 && code <= 0x2069);                // isolates
}

QString escaped_for_terminal(const QString &text)
{
    QString escaped;
    escaped.reserve(text.size());
    for (const QChar character : text) {
        if (is_unsafe_for_terminal(character)) {
            escaped += escape_of(character);
        } else {
            escaped += character;
        }
    }
    return escaped;
}
