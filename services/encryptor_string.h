/// The log cipher: a key-stream chain over a 64-bit key, with one random byte in front, an integrity block and optional
/// compression. A record is the Base64 text of: version byte 3, flags byte, chained bytes.
#pragma once

#include <QByteArray>
#include <QString>
#include <QVector>

class encryptor_string
{
public:
    /// What the last call ended with.
    enum last_error
    {
        error_none = 0,
        error_no_key = 1,
        error_bad_version = 2,
        error_integrity = 3,
    };

    /// Seeds the generator of the random byte from the clock.
    encryptor_string();

    /// In: text (its UTF-8 bytes are taken) or bytes. Out: the record as Base64 text, empty when there is no key.
    QString encryptToString(const QString &text);
    QString encryptToString(QByteArray data);
    /// In: text or bytes. Out: the record's bytes, empty when there is no key.
    QByteArray encryptToByteArray(const QString &text);
    QByteArray encryptToByteArray(QByteArray data);

    /// In: a record, as Base64 text or as bytes. Out: what was enciphered, read as UTF-8 where text is asked for; empty
    /// when the record is shorter than three bytes, of another version or damaged (get_last_error tells).
    QString decryptToString(const QString &base64);
    QString decryptToString(QByteArray data);
    QByteArray decryptToByteArray(const QString &base64);
    QByteArray decryptToByteArray(QByteArray data);

    int get_last_error() const { return cipher_last_error_int; }

private:
    void splitKey();
    bool has_key(); // warns and notes the error when not
    char take_compression(QByteArray &data) const;
    char protect(QByteArray &data) const;
    bool check_protection(QByteArray &data, char flags) const;

    quint64 cipher_key_quint64 = Q_UINT64_C(0x3f6a1c5e7d20b894);
    QVector<char> cipher_key_parts;
    int cipher_compression_mode_int = 0; // 0 where it makes the data smaller, 1 always, any other never
    int cipher_protection_mode_int = 1;  // 1 a 16-bit checksum, 2 a SHA-1 hash, any other none
    int cipher_last_error_int = error_none;
};
