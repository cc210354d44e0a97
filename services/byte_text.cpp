#include "services/byte_text.h"

#include <QTextCodec>

QString text_of_unknown_encoding(const QByteArray &bytes)
{
    QTextCodec::ConverterState state;
    const QString text = QTextCodec::codecForName("UTF-8")->toUnicode(bytes.constData(), bytes.size(), &state);
    const bool is_valid = state.invalidChars == 0 && state.remainingChars == 0;
    return is_valid ? text : QString::fromLatin1(bytes);
}

QByteArray bytes_before_zero(const QByteArray &bytes)
{
    const int end = bytes.indexOf('\0');
    return end < 0 ? bytes : bytes.left(end);
}
