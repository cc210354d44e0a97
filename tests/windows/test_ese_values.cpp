// The values of an ESE table in text form: all column types, texts by codepage, long values with what the library finds
// and what it does not, and files that are damaged or are none.
#include "core/plugin_static_function.h"
#include "evidence/ese_file.h"
#include "evidence/files.h"
#include "tests/support/tree_snapshot.h"
#include "windows/specific_table.h"

#include <QFile>
#include <QTemporaryDir>
#include <QTest>

#include <sys/stat.h>

using evidence::ese_codepage;
using evidence::ese_column;
using evidence::ese_compression;
using evidence::ese_storage;
using evidence::ese_type;
using evidence::ese_value;

namespace {

constexpr auto tagged = ese_storage::tagged;

// All values of a table, a list a record.
class table_values : public specific_table
{
public:
    using specific_table::get_column_name_and_type;
    using specific_table::get_record_values;

    explicit table_values(const QString &file, const QString &table = QStringLiteral("Values"))
        : result(start_parsing(file, table))
    {
    }
    void get_column_name_and_type(libesedb_record_t *record, libesedb_error_t *error) override
    {
        records.append(QByteArrayList());
        specific_table::get_column_name_and_type(record, error);
    }
    void get_record_values(libesedb_record_t *record, libesedb_error_t *error, QString, int entry,
                           unsigned int type) override
    {
        records.last().append(record_type_case(record, entry, type, error));
    }

    QList<QByteArrayList> records;
    int result;
};

struct typed_value
{
    ese_column column;
    ese_value value;
    QByteArray text;
    QByteArray text_of_absent;
};

QString long_text(int size)
{
    QString text;
    while (text.size() < size) {
        text += QStringLiteral("%1 Grüße \U0001F600; ").arg(text.size());
    }
    return text;
}

QByteArray content_of(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

// Overwrites all of the pages that hold the bytes.
void damage_pages_with(const QByteArray &bytes, const QString &path, int page_size)
{
    QByteArray content = content_of(path);
    const int found = content.indexOf(bytes);
    QVERIFY(found > 0);
    for (int at = found; at >= 0; at = content.indexOf(bytes, at)) {
        content.replace(at / page_size * page_size, page_size, QByteArray(page_size, '\xff'));
    }
    evidence::write_file(path, content);
}

} // namespace

class test_ese_values : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void reads_every_type();
    void reads_text_by_codepage();
    void reads_long_values_data();
    void reads_long_values();
    void logs_what_a_damaged_page_took();
    void refuses_records_beyond_their_end();
    void refuses_catalogs_that_lie_data();
    void refuses_catalogs_that_lie();
    void survives_damage();
    void opens_no_other_file();

private:
    QString new_path() { return folder.filePath(QStringLiteral("%1/store.vol").arg(++file_count)); }
    void log_to(const QString &path);

    QTemporaryDir folder;
    int file_count = 0;
};

void test_ese_values::log_to(const QString &path)
{
    struct_GLOBAL_COMMON_TRAWL_AND_ARTIFACT_general_info info;
    info.debug_file_path_QString = path;
    info.debug_mode_status_bool = true;
    info.debug_print_in_file_bool = true;
    plugin_static_function::set_essentials();
    plugin_static_function::set_general_info(info);
}

void test_ese_values::reads_every_type()
{
    const auto number = [](qint64 value) { return ese_value::number(value); };
    const auto bytes = [](const char *hex) { return ese_value::bytes(QByteArray::fromHex(hex)); };
    const QString words = QStringLiteral("Text");
    const std::vector<typed_value> all = {
        {{"true", ese_type::boolean}, ese_value::boolean(true), "true", "false"},
        {{"false", ese_type::boolean}, ese_value::boolean(false), "false", "false"},
        {{"8", ese_type::unsigned8}, number(200), "200", "0"},
        {{"16", ese_type::signed16}, number(-1), "65535", "0"},
        {{"32", ese_type::signed32}, number(-1), "4294967295", "0"},
        {{"money", ese_type::currency}, number(0x010203), "030201", ""},
        {{"float", ese_type::float32}, ese_value::number(-2.5), "-2.5", "0"},
        {{"double", ese_type::float64}, ese_value::number(12345678.9), "1.23457e+07", "0"},
        {{"date", ese_type::date_time}, number(132000000000000001), "132000000000000001", "0"},
        {{"u32", ese_type::unsigned32}, number(4294967295), "4294967295", "0"},
        {{"s64", ese_type::signed64}, number(-5), "-5", "0"},
        {{"guid", ese_type::guid}, bytes("a1b2c300112233445566778899aabbcc"), "a1b2c3", ""},
        {{"u16", ese_type::unsigned16}, number(65535), "65535", "0"},
        // An absent value of fixed size reads as zero unless it is the last in its record.
        {{"last", ese_type::unsigned8}, number(1), "1", "0"},
        {{"binary", ese_type::binary}, bytes("000a00ff"), "000a00ff", ""},
        {{"text", ese_type::text}, ese_value::text(words), "Text", ""},
        {{"large binary", ese_type::long_binary}, bytes("00ff00"), "00ff00", ""},
        {{"large text", ese_type::long_text}, ese_value::text(words), "Text", ""},
        {{"large 1252", ese_type::long_text, ese_codepage::windows_1252}, ese_value::text(words), "Text", ""},
        {{"none", ese_type::none, ese_codepage::utf16, tagged}, ese_value::bytes("raw\0x"), "raw", ""},
    };
    const QString path = new_path();
    std::vector<ese_column> columns;
    std::vector<ese_value> values;
    QByteArrayList expected;
    QByteArrayList expected_of_absent;
    for (const typed_value &one : all) {
        columns.push_back(one.column);
        values.push_back(one.value);
        expected.append(one.text);
        expected_of_absent.append(one.text_of_absent);
    }
    evidence::ese_file file(path);
    evidence::ese_table table = file.add_table("Values", columns);
    file.add_table("Empty", columns);
    table.add_record(values);
    table.add_record({});
    file.finish();

    const table_values read(path);
    QCOMPARE(read.result, 0);
    QCOMPARE(read.records.size(), 2);
    QCOMPARE(read.struct_data_QList.size(), 2);
    QCOMPARE(read.records.at(0), expected);
    QCOMPARE(read.records.at(1), expected_of_absent);
    QVERIFY(table_values(path, QStringLiteral("Empty")).records.isEmpty());
    QVERIFY(table_values(path, QStringLiteral("values")).records.isEmpty());
}

void test_ese_values::reads_text_by_codepage()
{
    const QString words = QStringLiteral("Größe");
    const QByteArray utf8 = words.toUtf8();
    const QString path = new_path();
    evidence::ese_file file(path);
    const auto column = [](const char *name, ese_type type, ese_codepage codepage) {
        return ese_column{name, type, codepage, tagged};
    };
    evidence::ese_table table =
        file.add_table("Values", {column("utf-16", ese_type::text, ese_codepage::utf16),
                                  column("large utf-16", ese_type::long_text, ese_codepage::utf16),
                                  column("1252", ese_type::text, ese_codepage::windows_1252),
                                  column("large 1252", ese_type::long_text, ese_codepage::windows_1252),
                                  column("ascii", ese_type::long_text, ese_codepage::ascii)});
    const ese_value emoji = ese_value::text(words + QStringLiteral(" \U0001F600"));
    const ese_value euro = ese_value::bytes("\x80 Gr\xf6\xdf"
                                            "e");
    table.add_record({emoji, emoji, euro, euro, ese_value::text(QStringLiteral("plain"))});
    // Up to the first zero; a mark of the byte order is a character.
    const ese_value cut = ese_value::text(QStringLiteral("\uFEFFa") + QChar(0) + QLatin1Char('b'));
    const ese_value cut_bytes = ese_value::bytes(QByteArray("a\0b", 3));
    table.add_record({cut, cut, cut_bytes, cut_bytes, cut_bytes});
    const ese_value compressed = ese_value::text(QStringLiteral("plain"));
    table.add_record({{},
                      compressed.compressed(ese_compression::seven_bit_unicode),
                      {},
                      compressed.compressed(ese_compression::seven_bit_ascii),
                      compressed.compressed(ese_compression::lzxpress)});
    file.finish();

    const table_values read(path);
    QCOMPARE(read.records.size(), 3);
    const QByteArray with_emoji = utf8 + " \xf0\x9f\x98\x80";
    const QByteArray with_euro = "\xe2\x82\xac " + utf8;
    QCOMPARE(read.records.at(0), (QByteArrayList{with_emoji, with_emoji, with_euro, with_euro, "plain"}));
    QCOMPARE(read.records.at(1), (QByteArrayList{"\xef\xbb\xbf"
                                                 "a",
                                                 "\xef\xbb\xbf"
                                                 "a",
                                                 "a", "a", "a"}));
    QCOMPARE(read.records.at(2), (QByteArrayList{"", "plain", "", "plain", "plain"}));
}

void test_ese_values::reads_long_values_data()
{
    QTest::addColumn<int>("page_size");
    QTest::addColumn<bool>("for_the_library");
    QTest::addColumn<quint32>("revision");
    QTest::newRow("4 KiB") << 4096 << false << 0x11u;
    QTest::newRow("8 KiB") << 8192 << false << 0x11u;
    QTest::newRow("16 KiB") << 16384 << false << 0x11u;
    QTest::newRow("32 KiB") << 32768 << false << 0x11u;
    QTest::newRow("older files") << 4096 << false << 0x09u;
    QTest::newRow("as the library finds them") << 8192 << true << 0x11u;
}

void test_ese_values::reads_long_values()
{
    QFETCH(int, page_size);
    QFETCH(bool, for_the_library);
    QFETCH(quint32, revision);
    const QString path = new_path();
    evidence::ese_file_options options;
    options.page_size = page_size;
    options.format_revision = revision;
    evidence::ese_file file(path, options);
    evidence::ese_table table =
        file.add_table("Values",
                       {{"number", ese_type::signed32},
                        {"text", ese_type::long_text},
                        {"1252", ese_type::long_text, ese_codepage::windows_1252},
                        {"binary", ese_type::long_binary}},
                       for_the_library ? evidence::ese_long_value_layout::readable_by_libesedb_2018
                                       : evidence::ese_long_value_layout::ordinary);
    const int count = for_the_library ? 2 : 300; // enough for branch pages in the tree
    const QByteArray letters = QByteArray("abc0123 ").repeated(700);
    const QByteArray binary = QByteArray("\0\x01\xff", 3).repeated(30000);
    for (int i = 0; i < count; ++i) {
        const ese_value text = ese_value::text(long_text(900 + i)).as_long_value();
        const ese_value ascii = ese_value::bytes(letters.left(5000 + i)).as_long_value();
        table.add_record({ese_value::number(qint64{i}), i % 3 == 1 ? text.compressed(ese_compression::lzxpress) : text,
                          i % 3 == 1 ? ascii.compressed(ese_compression::seven_bit_ascii) : ascii,
                          i % 100 == 0 ? ese_value::bytes(binary).as_long_value() : ese_value()});
    }
    file.finish();

    const table_values read(path);
    QCOMPARE(read.records.size(), count);
    for (int i = 0; i < count; ++i) {
        const QByteArray large = i % 100 == 0 ? binary.toHex() : QByteArray();
        QCOMPARE(read.records.at(i),
                 (QByteArrayList{QByteArray::number(i), long_text(900 + i).toUtf8(), letters.left(5000 + i), large}));
    }
}

void test_ese_values::logs_what_a_damaged_page_took()
{
    const QString path = new_path();
    evidence::ese_file file(path);
    evidence::ese_table table =
        file.add_table("Values", {{"number", ese_type::signed32}, {"body", ese_type::long_binary}});
    for (int i = 0; i < 4; ++i) {
        const QByteArray body = QByteArray(1, static_cast<char>('A' + i)).repeated(30000);
        table.add_record({ese_value::number(qint64{i}), ese_value::bytes(body).as_long_value()});
    }
    file.finish();
    damage_pages_with(QByteArray(100, 'B'), path, 8192);

    const QString log = path + QStringLiteral(".log");
    log_to(log);
    const table_values read(path);
    plugin_static_function::set_essentials();
    QCOMPARE(read.records.size(), 4);
    QCOMPARE(read.records.at(1), (QByteArrayList{"1", ""}));
    QCOMPARE(read.records.at(3), (QByteArrayList{"3", QByteArray("44").repeated(30000)}));
    const QByteArray lines = content_of(log);
    QVERIFY2(lines.contains("[record_type_case] value not readable: file " + path.toUtf8() +
                            ", table Values, record 1, column body"),
             lines.constData());
}

// Whatever is damaged: an end, no crash, and no more records than there were.
// A value that is larger than the page, one that ends before it begins, a tagged one that begins behind the record.
void test_ese_values::refuses_records_beyond_their_end()
{
    const QByteArray lies[] = {QByteArray("\xff\x7f", 2), QByteArray("\1\0", 2), QByteArray("\xff\x1f", 2)};
    for (const QByteArray &lie : lies) {
        const QString path = new_path();
        evidence::ese_file file(path);
        evidence::ese_table table =
            file.add_table("Values", {{"a", ese_type::binary}, {"b", ese_type::binary}, {"c", ese_type::long_binary}});
        for (const char *number : {"1", "2"}) {
            table.add_record({ese_value::bytes(QByteArray("first") + number), ese_value::bytes("b"),
                              ese_value::bytes(QByteArray("tagged") + number)});
        }
        file.finish();
        QByteArray content = content_of(path);
        const bool is_tagged = &lie == &lies[2];
        const int value = content.indexOf(is_tagged ? "tagged2" : "first2") - (is_tagged ? 1 : 0); // behind its flags
        content.replace(value - 2, 2, lie);
        evidence::write_file(path, content);
        const auto hex = [](const char *text) { return QByteArray(text).toHex(); };
        QCOMPARE(table_values(path).records, QList<QByteArrayList>({{hex("first1"), hex("b"), hex("tagged1")}}));
    }
}

void test_ese_values::refuses_catalogs_that_lie_data()
{
    QTest::addColumn<QByteArray>("column");
    QTest::addColumn<int>("place"); // in the column's record, in front of its name
    QTest::addColumn<QByteArray>("truth");
    QTest::addColumn<QByteArray>("lie");
    constexpr int name_of_fixed = 37;
    constexpr int name_of_variable = 33;
    QTest::newRow("a column is a table") << QByteArray("second") << 8 - name_of_variable << QByteArray("\2")
                                         << QByteArray("\1");
    QTest::newRow("a column twice") << QByteArray("second") << 10 - name_of_variable << QByteArray("\x81")
                                    << QByteArray("\x80");
    QTest::newRow("of a later table") << QByteArray("second") << 7 - name_of_variable << QByteArray(1, '\0')
                                      << QByteArray("\1");
    QTest::newRow("a larger number") << QByteArray("number") << 18 - name_of_fixed << QByteArray("\4")
                                     << QByteArray("\x8");
    QTest::newRow("much larger bytes") << QByteArray("guid") << 19 - name_of_fixed << QByteArray(1, '\0')
                                       << QByteArray("\x10");
}

void test_ese_values::refuses_catalogs_that_lie()
{
    QFETCH(QByteArray, column);
    QFETCH(int, place);
    QFETCH(QByteArray, truth);
    QFETCH(QByteArray, lie);
    const QString path = new_path();
    evidence::ese_file file(path);
    evidence::ese_table table = file.add_table("Values", {{"number", ese_type::signed32},
                                                          {"guid", ese_type::guid},
                                                          {"first", ese_type::binary},
                                                          {"second", ese_type::binary}});
    table.add_record({ese_value::number(qint64{1}), ese_value(), ese_value::bytes("a"), ese_value::bytes("b")});
    file.finish();
    QCOMPARE(table_values(path).records.size(), 1);
    QByteArray content = content_of(path);
    const int name = content.indexOf(column);
    QCOMPARE(content.mid(name + place, 1), truth);
    content.replace(name + place, 1, lie);
    evidence::write_file(path, content);
    const table_values read(path);
    QCOMPARE(read.result, -1);
    QVERIFY(read.records.isEmpty());
}

void test_ese_values::survives_damage()
{
    const QString path = new_path();
    evidence::ese_file file(path);
    evidence::ese_table table = file.add_table(
        "Values", {{"number", ese_type::signed32}, {"text", ese_type::long_text}, {"body", ese_type::long_binary}});
    for (int i = 0; i < 200; ++i) {
        table.add_record({ese_value::number(qint64{i}), ese_value::text(long_text(200)),
                          ese_value::bytes(long_text(3000).toUtf8()).as_long_value()});
    }
    file.finish();
    const QByteArray content = content_of(path);
    quint32 random = 1;
    for (int round = 0; round < 60; ++round) {
        QByteArray damaged = content;
        for (int i = 0; i < 40; ++i) {
            random = random * 1664525 + 1013904223;
            const int page = static_cast<int>((random >> 8) % static_cast<quint32>(content.size() / 8192 - 4)) + 4;
            // The header of a page and its tags lead everywhere else.
            const int place = round % 3 == 0 ? 16 + i % 24 : round % 3 == 1 ? 8191 - i : (random >> 4) % 8192;
            damaged[page * 8192 + place] = static_cast<char>(random >> 24);
        }
        evidence::write_file(path, damaged);
        QVERIFY(table_values(path).records.size() <= 2000);
    }
}

void test_ese_values::opens_no_other_file()
{
    const QDir root(folder.filePath(QStringLiteral("others")));
    evidence::make_folder(root.filePath(QStringLiteral("folder")));
    evidence::write_file(root.filePath(QStringLiteral("text")), "no database");
    evidence::write_file(root.filePath(QStringLiteral("empty")), "");
    QCOMPARE(::mkfifo(QFile::encodeName(root.filePath(QStringLiteral("pipe"))).constData(), 0600), 0);
    evidence::ese_file file(root.filePath(QStringLiteral("store.vol")));
    file.add_table("Values", {{"number", ese_type::signed32}}).add_record({ese_value::number(qint64{1})});
    file.finish();
    evidence::write_file(root.filePath(QStringLiteral("cut")),
                         content_of(root.filePath(QStringLiteral("store.vol"))).left(20000));
    const tree_snapshot before(root.path());
    for (const char *name : {"text", "empty", "folder", "pipe", "absent"}) {
        const table_values read(root.filePath(QLatin1String(name)));
        QCOMPARE(read.result, -1);
        QVERIFY(read.struct_data_QList.isEmpty());
    }
    QVERIFY(table_values(root.filePath(QStringLiteral("cut"))).records.isEmpty());
    QCOMPARE(table_values(root.filePath(QStringLiteral("store.vol"))).records.size(), 1);
    QCOMPARE(before.changes(), QString());
}

QTEST_GUILESS_MAIN(test_ese_values)
#include "test_ese_values.moc"
