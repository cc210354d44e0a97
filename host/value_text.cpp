#include "host/value_text.h"

#include "host/terminal.h"

#include <QLocale>

#include <cmath>

namespace {

// All digits that the number has, and a point, so that a real stays one: 600000000.0, not 6e+08.
QString real_text(double number)
{
    constexpr double longest_written_out = 1e15;
    if (!std::isfinite(number)) {
        return number > 0 ? QStringLiteral("Infinity") : QStringLiteral("-Infinity");
    }
    const bool is_long = std::fabs(number) >= longest_written_out;
    const QString text = QString::number(number, is_long ? 'g' : 'f', QLocale::FloatingPointShortest);
    return is_long || text.contains(QLatin1Char('.')) ? text : text + QStringLiteral(".0");
}

} // namespace

QString value_text(const QVariant &value)
{
    switch (static_cast<QMetaType::Type>(value.type())) {
    case QMetaType::Double:
        return real_text(value.toDouble());
    case QMetaType::QByteArray:
        return QString::fromLatin1(value.toByteArray().toHex());
    default:
        return value.toString();
    }
}

QString json_text(const QString &text)
{
    QString quoted(QLatin1Char('"'));
    for (const QChar character : text) {
        if (character == QLatin1Char('"') || character == QLatin1Char('\\')) {
            quoted += QLatin1Char('\\');
            quoted += character;
        } else if (is_unsafe_for_terminal(character)) {
            quoted += QStringLiteral("\\u%1").arg(character.unicode(), 4, 16, QLatin1Char('0'));
        } else {
            quoted += character;
        }
    }
    return quoted + QLatin1Char('"');
}

QString json_value(const QVariant &value)
{
    if (value.isNull()) {
        return QStringLiteral("null");
    }
    switch (static_cast<QMetaType::Type>(value.type())) {
    case QMetaType::Int:
    case QMetaType::LongLong:
        return value.toString();
    case QMetaType::Double:
        return std::isfinite(value.toDouble()) ? value_text(value) : json_text(value_text(value));
    default:
        return json_text(value_text(value));
    }
}
