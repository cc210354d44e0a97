#include "services/encryptor_string.h"

#include <QCryptographicHash>
#include <QDataStream>
#include <QDateTime>
#include <QtGlobal>

#include <utility>

namespace {

constexpr char record_version = 3;
constexpr char flag_compressed = 0x01;
constexpr char flag_checksum = 0x02;
constexpr char flag_hash = 0x04;
constexpr int checksum_size = 2;
constexpr int hash_size = 20;

QByteArray checksum_of(const QByteArray &data)
{
    QByteArray block;
    QDataStream stream(&block, QIODevice::WriteOnly); // big-endian unless told otherwise
    stream << qChecksum(data.constData(), static_cast<uint>(data.size()));
    return block;
}

QByteArray hash_of(const QByteArray &data)
{
    return QCryptographicHash::hash(data, QCryptographicHash::Sha1);
}

// Qt 5.15 calls these two deprecated. The sequence that they give is the one the records have always been made with.
QT_WARNING_PUSH
QT_WARNING_DISABLE_DEPRECATED
void seed_from_clock()
{
    qsrand(static_cast<uint>(QDateTime::currentMSecsSinceEpoch() & 0xffff));
}

char random_byte()
{
    return static_cast<char>(qrand() & 0xff);
}
QT_WARNING_POP

} // namespace

encryptor_string::encryptor_string()
{
    seed_from_clock();
    splitKey();
}

void encryptor_string::splitKey()
{
    cipher_key_parts.clear();
    for (int i = 0; i < 8; ++i) {
        cipher_key_parts.append(static_cast<char>((cipher_key_quint64 >> (8 * i)) & 0xff));
    }
}

bool encryptor_string::has_key()
{
    if (!cipher_key_parts.isEmpty()) {
        return true;
    }
    qWarning("No key set.");
    cipher_last_error_int = error_no_key;
    return false;
}

char encryptor_string::take_compression(QByteArray &data) const
{
    if (cipher_compression_mode_int != 0 && cipher_compression_mode_int != 1) {
        return 0;
    }
    const QByteArray compressed = qCompress(data, 9);
    if (cipher_compression_mode_int == 0 && compressed.size() >= data.size()) {
        return 0;
    }
    data = compressed;
    return flag_compressed;
}

char encryptor_string::protect(QByteArray &data) const
{
    switch (cipher_protection_mode_int) {
    case 1:
        data.prepend(checksum_of(data));
        return flag_checksum;
    case 2:
        data.prepend(hash_of(data));
        return flag_hash;
    default:
        return 0;
    }
}

QByteArray encryptor_string::encryptToByteArray(QByteArray data)
{
    if (!has_key()) {
        return QByteArray();
    }
    char flags = take_compression(data);
    flags = static_cast<char>(flags | protect(data));
    data.prepend(random_byte());

    char carry = 0;
    for (int i = 0; i < data.size(); ++i) {
        carry = static_cast<char>(data.at(i) ^ carry ^ cipher_key_parts.at(i % 8));
        data[i] = carry;
    }
    data.prepend(flags);
    data.prepend(record_version);
    cipher_last_error_int = error_none;
    return data;
}

bool encryptor_string::check_protection(QByteArray &data, char flags) const
{
    const int block_size = (flags & flag_checksum) ? checksum_size : (flags & flag_hash) ? hash_size : 0;
    if (data.size() < block_size) {
        return false;
    }
    const QByteArray block = data.left(block_size);
    data.remove(0, block_size);
    switch (block_size) {
    case checksum_size:
        return block == checksum_of(data);
    case hash_size:
        return block == hash_of(data);
    default:
        return true;
    }
}

QByteArray encryptor_string::decryptToByteArray(QByteArray data)
{
    if (!has_key() || data.size() < 3) {
        return QByteArray();
    }
    if (data.at(0) != record_version) {
        cipher_last_error_int = error_bad_version;
        qWarning("Invalid version or not a cyphertext.");
        return QByteArray();
    }
    const char flags = data.at(1);
    data.remove(0, 2);

    char carry = 0;
    for (int i = 0; i < data.size(); ++i) {
        const char cipher_byte = data.at(i);
        data[i] = static_cast<char>(cipher_byte ^ carry ^ cipher_key_parts.at(i % 8));
        carry = cipher_byte;
    }
    data.remove(0, 1); // the random byte

    if (!check_protection(data, flags)) {
        cipher_last_error_int = error_integrity;
        return QByteArray();
    }
    if (flags & flag_compressed) {
        data = qUncompress(data);
    }
    cipher_last_error_int = error_none;
    return data;
}

QString encryptor_string::encryptToString(const QString &text)
{
    return encryptToString(text.toUtf8());
}

QString encryptor_string::encryptToString(QByteArray data)
{
    return QString::fromLatin1(encryptToByteArray(std::move(data)).toBase64());
}

QByteArray encryptor_string::encryptToByteArray(const QString &text)
{
    return encryptToByteArray(text.toUtf8());
}

QString encryptor_string::decryptToString(const QString &base64)
{
    return QString::fromUtf8(decryptToByteArray(base64));
}

QString encryptor_string::decryptToString(QByteArray data)
{
    return QString::fromUtf8(decryptToByteArray(std::move(data)));
}

QByteArray encryptor_string::decryptToByteArray(const QString &base64)
{
    return decryptToByteArray(QByteArray::fromBase64(base64.toLatin1()));
}
