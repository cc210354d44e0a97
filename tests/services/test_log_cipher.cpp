// The log: the cipher of its records, taken apart and put together by a second hand, and the lines in plain and
// enciphered files.
#include "services/encryptor_string.h"
#include "tests/services/service_test.h"

#include <QCryptographicHash>
#include <QRegularExpression>
#include <QTemporaryDir>

namespace {

// 0x3f6a1c5e7d20b894 from its least significant byte on.
const unsigned char key_parts[] = {0x94, 0xb8, 0x20, 0x7d, 0x5e, 0x1c, 0x6a, 0x3f};

QByteArray record_of(char version, char flags, const QByteArray &plain)
{
    QByteArray record = QByteArray(1, version) + flags;
    char carry = 0;
    for (int i = 0; i < plain.size(); ++i) {
        carry = static_cast<char>(plain.at(i) ^ carry ^ key_parts[i % 8]);
        record += carry;
    }
    return record;
}

QByteArray checksum_of(const QByteArray &data)
{
    const quint16 sum = qChecksum(data.constData(), static_cast<uint>(data.size()));
    return QByteArray(1, static_cast<char>(sum >> 8)) + static_cast<char>(sum & 0xff);
}

} // namespace

class test_log_cipher : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        general = {};
        general.debug_mode_status_bool = true;
        general.debug_print_in_file_bool = true;
        general.debug_file_path_QString = log_path;
    }

    void cleanup()
    {
        service::close_debug_file();
        service::set_essentials();
        QFile::remove(log_path);
    }

    // Non-ASCII goes beyond the first key parts; what is long and repetitive is compressed.
    void records()
    {
        for (const auto &[text, flags] :
             {std::pair("x"_s, 0x02), {"Größe 文字 😀"_s, 0x02}, {"abc"_s.repeated(1000), 0x03}}) {
            const QString base64 = service::encrypt_string(text, "void caller()"_s);
            const QByteArray bytes = QByteArray::fromBase64(base64.toLatin1());
            QCOMPARE(QString::fromLatin1(bytes.toBase64()), base64); // padded, and without line ends
            const QByteArray data = flags & 1 ? qCompress(text.toUtf8(), 9) : text.toUtf8();
            const QByteArray random(1, static_cast<char>(bytes.at(2) ^ key_parts[0]));
            QCOMPARE(bytes, record_of(3, static_cast<char>(flags), random + checksum_of(data) + data));

            encryptor_string reader;
            QCOMPARE(reader.decryptToString(base64), text);
            QCOMPARE(reader.get_last_error(), 0);
            for (int i = 2; i < bytes.size(); ++i) { // whichever byte was changed, it is noticed
                QByteArray changed = bytes;
                changed[i] = static_cast<char>(~bytes.at(i));
                QCOMPARE(reader.decryptToByteArray(changed), QByteArray());
                QCOMPARE(reader.get_last_error(), 3);
            }
        }
        QCOMPARE(service::encrypt_string(QString(), QString()), QString());
    }

    void records_of_another_hand()
    {
        const QByteArray text = "abc";
        const QByteArray hash = QCryptographicHash::hash(text, QCryptographicHash::Sha1);
        const QByteArray packed = qCompress(text, 9);
        encryptor_string reader;
        QCOMPARE(reader.decryptToByteArray(record_of(3, 0x00, '?' + text)), text);
        QCOMPARE(reader.decryptToByteArray(record_of(3, 0x04, '?' + hash + text)), text);
        QCOMPARE(reader.decryptToByteArray(record_of(3, 0x03, '?' + checksum_of(packed) + packed)), text);
        // Worked out without Qt: random byte 0x5a, the ISO 3309 checksum of the UTF-8 bytes, 0x4e98, and these bytes.
        QCOMPARE(reader.decryptToString("AwLOOICuhOrhHRbL"_s), "Straße"_s);
        QCOMPARE(reader.get_last_error(), 0);
    }

    void damaged_records()
    {
        encryptor_string reader;
        QTest::ignoreMessage(QtWarningMsg, "Invalid version or not a cyphertext.");
        QCOMPARE(reader.decryptToByteArray(record_of(2, 0x02, '?' + checksum_of("abc") + "abc")), QByteArray());
        QCOMPARE(reader.get_last_error(), 2);
        QCOMPARE(reader.decryptToByteArray(QByteArray()), QByteArray());
        QCOMPARE(reader.get_last_error(), 2); // what the record before left
        for (const QByteArray &bytes : {record_of(3, 0x02, "?"), record_of(3, 0x02, "?a"), // the checksum is cut off
                                        record_of(3, 0x02, '?' + checksum_of("abc") + "abd"),
                                        record_of(3, 0x04, '?' + QByteArray(20, 'h') + "abc")}) {
            QCOMPARE(reader.decryptToByteArray(bytes), QByteArray());
            QCOMPARE(reader.get_last_error(), 3);
        }
    }

    void line_data()
    {
        text_columns("engine", "function", "behind_the_time");
        text_row("first engine", "0", "virtual void mail::pub_extract_artifacts()",
                 "TRAWL_BENCH][Artifacts Extraction][mail::pub_extract_artifacts");
        text_row("second engine, arguments", "1", "static QString a::b(QString, int) const",
                 "TRAWL_SWEEP][Artifacts Extraction][a::b");
        text_row("third engine, no arguments", "2", "  plain  ", "TRAWL_RELAY][Artifacts Extraction][plain");
        text_row("no engine, blank before the bracket", "-1", "void a::b ()",
                 " -----FAILED----- to find Engine Type ][-1][Artifacts Extraction][a::b");
        text_row("unknown engine, no function", "3", "  ",
                 " -----FAILED----- to find Engine Type ][3][Artifacts Extraction]"
                 "[FUNCTION INFO IS EMPTY ---FAILED--- debug!!!");
    }

    void line()
    {
        QFETCH(QString, engine);
        QFETCH(QString, function);
        QFETCH(QString, behind_the_time);
        evidence::write_file(log_path, "earlier run\n");
        service::set_general_info(general);
        service::set_general_info(general); // a run that did not close its log, and the next one
        service::set_engine_type(engine.toInt());
        service::app_debug("Größe"_s, function);
        const QString written = QString::fromUtf8(content_of(log_path)); // flushed, not closed
        const QRegularExpression expected(R"(^earlier run\n\[\d{4}-[A-Z][a-z]{2}-\d\dT\d\d-\d\d-\d\d\]\[)"_s +
                                          QRegularExpression::escape(behind_the_time + "]:-- Größe"_s) + "\n\\z"_s);
        QVERIFY2(expected.match(written).hasMatch(), qPrintable(written));
    }

    void enciphered_file()
    {
        general.debug_encryption_status_bool = true;
        service::set_general_info(general);
        service::set_engine_type(0);
        const QStringList messages{"Größe 文字"_s, "long "_s.repeated(500), QString()};
        for (const QString &message : messages) {
            service::app_debug(message, "void f()"_s);
        }
        const QString content = QString::fromLatin1(content_of(log_path));
        QVERIFY(!content.contains(QLatin1Char('\n')));
        const QStringList records = content.split("<[{()}]>"_s);
        QCOMPARE(records.size(), 4);
        QCOMPARE(records.at(3), QString()); // the separator closes the last one too
        for (int i = 0; i < 3; ++i) {
            const QString line = encryptor_string().decryptToString(records.at(i));
            QVERIFY2(line.endsWith("][TRAWL_BENCH][Artifacts Extraction][f]:-- "_s + messages.at(i)), qPrintable(line));
        }
    }

    void nothing_in_the_file()
    {
        general.debug_file_path_QString = folder.filePath("no/such/folder/mail.log"_s);
        service::set_general_info(general);
        service::app_debug("lost"_s, "void f()"_s);

        general.debug_file_path_QString = log_path;
        general.debug_print_in_file_bool = false;
        general.debug_print_on_terminal_bool = true;
        service::set_general_info(general);
        QTest::ignoreMessage(QtDebugMsg, QRegularExpression("^\\[.*\\[f\\]:-- \"quoted\" Größe$"_s));
        service::app_debug("\"quoted\" Größe"_s, "void f()"_s);

        general.debug_print_in_file_bool = true;
        general.debug_mode_status_bool = false;
        service::set_general_info(general);
        service::app_debug("debugging is off"_s, "void f()"_s);
        QVERIFY(!QFile::exists(log_path));
    }

private:
    QTemporaryDir folder;
    QString log_path = folder.filePath("mail.log"_s);
    struct_GLOBAL_COMMON_TRAWL_AND_ARTIFACT_general_info general;
};

QTEST_GUILESS_MAIN(test_log_cipher)
#include "test_log_cipher.moc"
