// Conversions of values that the stores and mail files hold. Fills no table itself.
#include "services/byte_text.h"
#include "windows/eml_header_scan.h"
#include "windows/mail_winos.h"

namespace {

constexpr qint64 filetime_of_1970 = Q_INT64_C(116444736000000000);
constexpr qint64 filetime_units_per_second = 10000000;

} // namespace

qint64 mail_winos::give_epoch_from_string(const QString &text)
{
    const qint64 filetime = text.toLongLong(); // 0 for what is no number
    return filetime < 1 ? 0 : (filetime - filetime_of_1970) / filetime_units_per_second;
}

QString mail_winos::base64_decode(const QString &text)
{
    if (text.isEmpty()) {
        return QLatin1String("");
    }
    const QByteArray decoded = QByteArray::fromBase64(text.toUtf8());
    return decoded.isNull() ? QString() : text_of_unknown_encoding(bytes_before_zero(decoded));
}

QString mail_winos::split_info_parsed(const QString &text)
{
    return behind_last_colon(text);
}
