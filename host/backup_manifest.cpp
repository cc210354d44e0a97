#include "host/backup_manifest.h"

#include <QCryptographicHash>

#include <algorithm>

QByteArray backup_name_of(const device_file &file)
{
    const QString text = file.domain + QLatin1Char('-') + file.relative_path;
    return QCryptographicHash::hash(text.toUtf8(), QCryptographicHash::Sha1).toHex();
}

bool is_backup_name(const QByteArray &text)
{
    constexpr int digits = 40;
    return text.size() == digits && std::all_of(text.begin(), text.end(), [](char character) {
               return (character >= '0' && character <= '9') || (character >= 'a' && character <= 'f') ||
                      (character >= 'A' && character <= 'F');
           });
}
