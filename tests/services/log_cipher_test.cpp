// The log: the cipher of its records, taken apart and put together by a second hand, and the lines in plain and
// enciphered files.
#include "core/plugin_static_function.h"
#include "evidence/files.h"
#include "services/encryptor_string.h"

#include <QCryptographicHash>
#include <QFile>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QTest>

using service = plugin_static_function;

namespace {

// 0x3f6a1c5e7d20b894 from its least significant byte on.
const unsigned char key_parts[] = {0x94, 0xb8, 0x20, 0x7d, 0x5e, 0x1c, 0x6a, 0x3f};

QByteArray chained(QByteArray plain)
{
    int carry = 0;
    for (int i = 0; i < plain.size(); ++i) {
        carry ^= (plain.at(i) & 0xff) ^ key_parts[i % 8];
        plain[i] = static_cast<char>(carry);
    }
    return plain;
}

QByteArray unchained(const QByteArray &cipher)
{
    QByteArray plain = cipher;
    for (int i = 0; i < cipher.size(); ++i) {
        plain[i] = static_cast<char>(cipher.at(i) ^ (i ? cipher.at(i - 1) : 0) ^ key_parts[i % 8]);
    }
    return plain;
}

QByteArray checksum_of(const QByteArray &data)
{
    const quint16 sum = qChecksum(data.constData(), static_cast<uint>(data.size()));
    return QByteArray(1, static_cast<char>(sum >> 8)) + static_cast<char>(sum & 0xff);
}

QByteArray record_of(int version, int flags, const QByteArray &plain)
{
    return QByteArray(1, static_cast<char>(version)) + static_cast<char>(flags) + chained(plain);
}

struct_GLOBAL_COMMON_TRAWL_AND_ARTIFACT_general_info log_into(const QString &path, bool enciphered)
{
    struct_GLOBAL_COMMON_TRAWL_AND_ARTIFACT_general_info info;
    info.debug_mode_status_bool = true;
    info.debug_print_in_file_bool = true;
    info.debug_encryption_status_bool = enciphered;
    info.debug_file_path_QString = path;
    return info;
}

QByteArray content_of(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("no file");
}

} // namespace

class log_cipher_test : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void cleanup();

    void record_data();
    void record();
    void known_record();
    void other_protections_are_read();
    void random_byte_changes();
    void damaged_record_data();
    void damaged_record();
    void any_flipped_byte_is_noticed();

    void line_data();
    void line();
    void plain_file();
    void enciphered_file();
    void terminal();
    void debugging_off();

private:
    QString log_path() const { return folder.filePath(QStringLiteral("mail.log")); }

    QTemporaryDir folder;
};

void log_cipher_test::cleanup()
{
    service::close_debug_file();
    service::set_essentials();
    QFile::remove(log_path());
}

void log_cipher_test::record_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<int>("flags");
    QTest::newRow("one character") << QStringLiteral("x") << 0x02;
    QTest::newRow("non-ASCII, beyond the first key parts") << QStringLiteral("Größe 文字 😀") << 0x02;
    QTest::newRow("long and repetitive") << QStringLiteral("abc").repeated(1000) << 0x03;
}

void log_cipher_test::record()
{
    QFETCH(QString, text);
    QFETCH(int, flags);
    const QString base64 = service::encrypt_string(text, QStringLiteral("void caller()"));
    const QByteArray bytes = QByteArray::fromBase64(base64.toLatin1());
    QCOMPARE(QString::fromLatin1(bytes.toBase64()), base64); // padded, and without line ends
    QCOMPARE(int(bytes.at(0)), 3);
    QCOMPARE(int(bytes.at(1)), flags);

    const QByteArray plain = unchained(bytes.mid(2));
    const QByteArray payload = plain.mid(3);
    QCOMPARE(plain.mid(1, 2), checksum_of(payload));
    QCOMPARE(payload, flags & 1 ? qCompress(text.toUtf8(), 9) : text.toUtf8());

    encryptor_string reader;
    QCOMPARE(reader.decryptToString(base64), text);
    QCOMPARE(reader.decryptToByteArray(bytes), text.toUtf8());
    QCOMPARE(reader.get_last_error(), 0);
}

// Worked out apart from any of this code: random byte 0x5a, CRC-16 (ISO 3309) of the UTF-8 bytes, "Straße".
void log_cipher_test::known_record()
{
    encryptor_string reader;
    QCOMPARE(reader.decryptToString(QStringLiteral("AwLOOICuhOrhHRbL")), QStringLiteral("Straße"));
    QCOMPARE(reader.get_last_error(), 0);
    QCOMPARE(service::encrypt_string(QString(), QString()), QString());
}

void log_cipher_test::other_protections_are_read()
{
    const QByteArray text = "abc";
    const QByteArray hash = QCryptographicHash::hash(text, QCryptographicHash::Sha1);
    const QByteArray packed = qCompress(text, 9);
    encryptor_string reader;
    QCOMPARE(reader.decryptToByteArray(record_of(3, 0x00, '?' + text)), text);
    QCOMPARE(reader.decryptToByteArray(record_of(3, 0x04, '?' + hash + text)), text);
    QCOMPARE(reader.decryptToByteArray(record_of(3, 0x03, '?' + checksum_of(packed) + packed)), text);
    QCOMPARE(reader.get_last_error(), 0);
}

void log_cipher_test::random_byte_changes()
{
    QSet<QString> records;
    for (int i = 0; i < 50 && records.size() < 2; ++i) {
        records.insert(service::encrypt_string(QStringLiteral("x"), QString()));
        QTest::qSleep(2); // the clock is what seeds it
    }
    QCOMPARE(records.size(), 2);
}

void log_cipher_test::damaged_record_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<int>("last_error"); // 2 is what the record read before left
    QTest::newRow("nothing") << QByteArray() << 2;
    QTest::newRow("two bytes") << QByteArray("\x03\x02") << 2;
    QTest::newRow("other version") << record_of(2, 0x02, '?' + checksum_of("abc") + "abc") << 2;
    QTest::newRow("checksum cut off") << record_of(3, 0x02, "?a") << 3;
    QTest::newRow("wrong checksum") << record_of(3, 0x02, '?' + checksum_of("abc") + "abd") << 3;
    QTest::newRow("hash cut off") << record_of(3, 0x04, '?' + QByteArray(19, 'h')) << 3;
    QTest::newRow("wrong hash") << record_of(3, 0x04, '?' + QByteArray(20, 'h') + "abc") << 3;
}

void log_cipher_test::damaged_record()
{
    QFETCH(QByteArray, bytes);
    encryptor_string reader;
    QTest::ignoreMessage(QtWarningMsg, "Invalid version or not a cyphertext.");
    reader.decryptToByteArray(QByteArray("not a record"));
    QCOMPARE(reader.get_last_error(), 2);
    if (bytes.startsWith('\x02')) {
        QTest::ignoreMessage(QtWarningMsg, "Invalid version or not a cyphertext.");
    }
    QCOMPARE(reader.decryptToByteArray(bytes), QByteArray());
    QTEST(reader.get_last_error(), "last_error");
}

void log_cipher_test::any_flipped_byte_is_noticed()
{
    const QByteArray good = encryptor_string().encryptToByteArray(QStringLiteral("a line of the log"));
    for (int i = 2; i < good.size(); ++i) {
        QByteArray flipped = good;
        flipped[i] = static_cast<char>(~good.at(i));
        encryptor_string reader;
        QCOMPARE(reader.decryptToByteArray(flipped), QByteArray());
        QCOMPARE(reader.get_last_error(), 3);
    }
}

void log_cipher_test::line_data()
{
    QTest::addColumn<int>("engine");
    QTest::addColumn<QString>("function");
    QTest::addColumn<QString>("behind_the_time");
    const auto row = [](const char *name, int engine, const char *function, const char *expected) {
        QTest::newRow(name) << engine << QString::fromLatin1(function) << QString::fromLatin1(expected);
    };
    row("first engine", 0, "virtual void mail::pub_extract_artifacts()",
        "TRAWL_BENCH][Artifacts Extraction][mail::pub_extract_artifacts]:-- message");
    row("second engine, arguments", 1, "static QString a::b(QString, int) const",
        "TRAWL_SWEEP][Artifacts Extraction][a::b]:-- message");
    row("third engine, no arguments", 2, "  plain_name  ", "TRAWL_RELAY][Artifacts Extraction][plain_name]:-- message");
    row("no engine, blank before the bracket", -1, "void a::b ()",
        " -----FAILED----- to find Engine Type ][-1][Artifacts Extraction][a::b]:-- message");
    row("unknown engine, no function", 3, "  ",
        " -----FAILED----- to find Engine Type ][3][Artifacts Extraction]"
        "[FUNCTION INFO IS EMPTY ---FAILED--- debug!!!]:-- message");
}

void log_cipher_test::line()
{
    QFETCH(int, engine);
    QFETCH(QString, function);
    QFETCH(QString, behind_the_time);
    service::set_general_info(log_into(log_path(), false));
    service::set_engine_type(engine);
    service::app_debug(QStringLiteral("message"), function);

    const QString written = QString::fromUtf8(content_of(log_path()));
    const QRegularExpression expected(
        QStringLiteral("^\\[\\d{4}-[A-Z][a-z]{2}-\\d\\dT\\d\\d-\\d\\d-\\d\\d\\]\\[%1\\n\\z")
            .arg(QRegularExpression::escape(behind_the_time)));
    QVERIFY2(expected.match(written).hasMatch(), qPrintable(written));
}

void log_cipher_test::plain_file()
{
    evidence::write_file(log_path(), "earlier run\n");
    for (const char *message : {"Größe", "second"}) { // a run that does not close its log, and the next one
        service::set_general_info(log_into(log_path(), false));
        service::app_debug(QString::fromUtf8(message), QStringLiteral("void f()"));
    }
    const QList<QByteArray> lines = content_of(log_path()).split('\n'); // flushed, not closed
    QCOMPARE(lines.size(), 4);
    QCOMPARE(lines.at(0), QByteArray("earlier run"));
    QVERIFY(lines.at(1).endsWith("]:-- Größe"));
    QVERIFY(lines.at(2).endsWith("]:-- second"));
    QCOMPARE(lines.at(3), QByteArray());
}

void log_cipher_test::enciphered_file()
{
    service::set_general_info(log_into(log_path(), true));
    service::set_engine_type(0);
    const QStringList messages{QStringLiteral("Größe 文字"), QStringLiteral("long ").repeated(500), QString()};
    for (const QString &message : messages) {
        service::app_debug(message, QStringLiteral("void f()"));
    }
    const QString content = QString::fromLatin1(content_of(log_path()));
    QVERIFY(!content.contains(QLatin1Char('\n')));
    const QStringList records = content.split(QStringLiteral("<[{()}]>"));
    QCOMPARE(records.size(), 4);
    QCOMPARE(records.at(3), QString()); // the separator closes the last one too
    for (int i = 0; i < 3; ++i) {
        const QString line = encryptor_string().decryptToString(records.at(i));
        QVERIFY2(line.endsWith(QStringLiteral("][TRAWL_BENCH][Artifacts Extraction][f]:-- ") + messages.at(i)),
                 qPrintable(line));
    }
}

void log_cipher_test::terminal()
{
    struct_GLOBAL_COMMON_TRAWL_AND_ARTIFACT_general_info info = log_into(log_path(), false);
    info.debug_print_in_file_bool = false;
    info.debug_print_on_terminal_bool = true;
    service::set_general_info(info);
    QTest::ignoreMessage(QtDebugMsg, QRegularExpression(QStringLiteral("^\\[.*\\[f\\]:-- \"quoted\" Größe$")));
    service::app_debug(QStringLiteral("\"quoted\" Größe"), QStringLiteral("void f()"));
    QVERIFY(!QFile::exists(log_path()));
}

void log_cipher_test::debugging_off()
{
    struct_GLOBAL_COMMON_TRAWL_AND_ARTIFACT_general_info info = log_into(log_path(), false);
    info.debug_mode_status_bool = false;
    service::set_general_info(info);
    service::app_debug(QStringLiteral("message"), QStringLiteral("void f()"));
    QVERIFY(!QFile::exists(log_path()));

    service::set_general_info(log_into(folder.filePath(QStringLiteral("no/such/folder/mail.log")), false));
    service::app_debug(QStringLiteral("message"), QStringLiteral("void f()")); // goes nowhere, and ends well
}

QTEST_GUILESS_MAIN(log_cipher_test)
#include "log_cipher_test.moc"
