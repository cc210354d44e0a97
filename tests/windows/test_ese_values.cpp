// The values of an ESE table in text form: all column types, texts by codepage, long values, and files that are
// damaged.
#include "core/plugin_static_function.h"
#include "evidence/files.h"
#include "tests/evidence/ese_tables.h"
#include "windows/specific_table.h"

#include <QTemporaryDir>
#include <QTest>

using codepage = evidence::ese_codepage;
using compression = evidence::ese_compression;
using storage = evidence::ese_storage;
using type = evidence::ese_type;
using value = evidence::ese_value;

namespace {

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
    void get_record_values(libesedb_record_t *record, libesedb_error_t *error, QString name, int entry,
                           unsigned int type) override
    {
        names.append(name);
        records.last().append(record_type_case(record, entry, type, error));
    }

    QStringList names; // of the columns, record by record
    QList<QByteArrayList> records;
    int result;
};

struct typed_value
{
    evidence::ese_column column;
    ::value value;
    QByteArray text;
    QByteArray text_of_absent = "";
};

value text(const char *written)
{
    return value::text(QString::fromUtf8(written));
}

value bytes(const char *hex)
{
    return value::bytes(QByteArray::fromHex(hex));
}

const value wide_with_zero = value::text(QStringLiteral("\uFEFFa") + QChar(0) + QLatin1Char('b'));
const value narrow_with_zero = value::bytes(QByteArray("a\0b", 3));
const QByteArray song = QByteArray("plain ").repeated(20);
const value sung = text(song.constData());

// Told out of order: a reader finds the fixed columns first, then the variable and the tagged ones.
const std::vector<typed_value> every_type{
    {{"none", type::none, codepage::utf16, storage::tagged}, value::bytes("raw"), "raw"},
    {{"large binary", type::long_binary}, bytes("00ff00"), "00ff00"},
    {{"binary", type::binary}, bytes("000a00ff"), "000a00ff"},
    {{"true", type::boolean}, value::boolean(true), "true", "false"},
    {{"false", type::boolean}, value::boolean(false), "false", "false"},
    {{"8", type::unsigned8}, value::number(200), "200", "0"},
    {{"16", type::signed16}, value::number(-1), "65535", "0"},
    {{"32", type::signed32}, value::number(-1), "4294967295", "0"},
    {{"money", type::currency}, value::number(0x010203), "030201"},
    {{"float", type::float32}, value::number(-2.5), "-2.5", "0"},
    {{"double", type::float64}, value::number(12345678.9), "1.23457e+07", "0"},
    {{"text", type::text}, text("Größe \U0001F600"), "Größe \U0001F600"},
    {{"large text", type::long_text}, text("Größe \U0001F600"), "Größe \U0001F600"},
    {{"date", type::date_time}, value::number(Q_INT64_C(132000000000000001)), "132000000000000001", "0"},
    {{"u32", type::unsigned32}, value::number(4294967294U), "4294967294", "0"},
    {{"s64", type::signed64}, value::number(-5), "-5", "0"},
    {{"guid", type::guid}, bytes("a1b2c300112233445566778899aabbcc"), "a1b2c3"},
    {{"fixed text", type::text, codepage::ascii, storage::fixed, 5}, text("abc"), "abc  "},
    {{"u16", type::unsigned16}, value::number(65534), "65534", "0"},
    // An absent value of fixed size reads as zero, also as the last in its record.
    {{"last", type::unsigned8}, value::number(1), "1", "0"},
    {{"tagged", type::signed32, codepage::utf16, storage::tagged}, value::number(7), "7", "0"},
    {{"1252", type::text, codepage::windows_1252}, value::bytes("\x80 Gr\xf6\xdf\x65"), "€ Größe"},
    {{"large 1252", type::long_text, codepage::windows_1252}, text("€ Größe"), "€ Größe"},
    {{"ascii", type::long_text, codepage::ascii}, text("plain"), "plain"},
    // A text ends at the first zero; a mark of the byte order is a character.
    {{"cut", type::text}, wide_with_zero, "\uFEFFa"},
    {{"large cut", type::long_text}, wide_with_zero, "\uFEFFa"},
    {{"cut 1252", type::text, codepage::windows_1252}, narrow_with_zero, "a"},
    {{"large cut 1252", type::long_text, codepage::windows_1252}, narrow_with_zero, "a"},
    {{"cut ascii", type::long_text, codepage::ascii}, narrow_with_zero, "a"},
    {{"folded", type::long_text}, sung.compressed(compression::seven_bit_unicode), song},
    {{"folded 1252", type::long_text, codepage::windows_1252}, sung.compressed(compression::seven_bit_ascii), song},
    {{"folded ascii", type::long_text, codepage::ascii}, sung.compressed(compression::lzxpress), song},
};

QString long_text(int size)
{
    QString text;
    while (text.size() < size) {
        text += QStringLiteral("%1 Grüße \U0001F600; ").arg(text.size());
    }
    return text;
}

} // namespace

Q_DECLARE_METATYPE(evidence::ese_file_options)

class test_ese_values : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void reads_every_type();
    void reads_long_values_data();
    void reads_long_values();
    void logs_what_a_damaged_page_took();
    void refuses_lies_data();
    void refuses_lies();
    void survives_damage();

private:
    QString new_path() { return folder.filePath(QStringLiteral("%1/store.vol").arg(++file_count)); }

    QTemporaryDir folder;
    int file_count = 0;
};

void test_ese_values::reads_every_type()
{
    std::vector<evidence::ese_column> columns;
    std::vector<value> values;
    for (const typed_value &one : every_type) {
        columns.push_back(one.column);
        values.push_back(one.value);
    }
    const QString path = new_path();
    evidence::ese_file file(path, {4096}); // the catalog takes several pages
    evidence::ese_table table = file.add_table("Values", columns);
    file.add_table("Empty", columns);
    table.add_record(values);
    table.add_record({});
    file.finish();

    const table_values read(path);
    QCOMPARE(read.result, 0);
    QCOMPARE(read.records.size(), 2);
    QCOMPARE(read.struct_data_QList.size(), 2);
    for (const typed_value &one : every_type) {
        const int entry = read.names.indexOf(QString::fromLatin1(one.column.name));
        const QByteArray name = one.column.name + ": ";
        QCOMPARE(name + read.records.at(0).value(entry), name + one.text);
        QCOMPARE(name + read.records.at(1).value(entry), name + one.text_of_absent);
    }
    QVERIFY(table_values(path, QStringLiteral("Empty")).records.isEmpty());
    QVERIFY(table_values(path, QStringLiteral("values")).records.isEmpty());
}

void test_ese_values::reads_long_values_data()
{
    QTest::addColumn<evidence::ese_file_options>("options");
    QTest::newRow("4 KiB") << evidence::ese_file_options{4096};
    QTest::newRow("8 KiB") << evidence::ese_file_options{8192};
    QTest::newRow("32 KiB") << evidence::ese_file_options{32768};
    QTest::newRow("older files") << evidence::ese_file_options{4096, 0x09};
}

void test_ese_values::reads_long_values()
{
    QFETCH(evidence::ese_file_options, options);
    constexpr int count = 300; // enough for branch pages in the tree
    const QByteArray letters = QByteArray("abc0123 ").repeated(700);
    const QByteArray binary = QByteArray("\0\x01\xff", 3).repeated(30000);
    std::vector<std::vector<value>> records;
    for (int i = 0; i < count; ++i) {
        const value text = value::text(long_text(900 + i)).as_long_value();
        const value ascii = value::bytes(letters.left(5000 + i)).as_long_value();
        records.push_back({value::number(i), i % 3 == 1 ? text.compressed(compression::lzxpress) : text,
                           i % 3 == 1 ? ascii.compressed(compression::seven_bit_ascii) : ascii,
                           i % 100 == 0 ? value::bytes(binary).as_long_value() : value()});
    }
    const QString path = new_path();
    write_table(path, "Values",
                {{"number", type::signed32},
                 {"text", type::long_text},
                 {"1252", type::long_text, codepage::windows_1252},
                 {"binary", type::long_binary}},
                records, options);

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
    const auto body = [](const char *letter) {
        return value::bytes(QByteArray(letter).repeated(30000)).as_long_value();
    };
    const QString path = new_path();
    write_table(path, "Values", {{"number", type::signed32}, {"body", type::long_binary}},
                {{value::number(0), body("A")},
                 {value::number(1), body("B")},
                 {value::number(2), body("C")},
                 {value::number(3), body("D")}});
    constexpr int page_size = 8192;
    QByteArray content = content_of(path);
    for (int at = content.indexOf("BBBB"); at >= 0; at = content.indexOf("BBBB", at)) {
        content.replace(at / page_size * page_size, page_size, QByteArray(page_size, '\xff'));
    }
    evidence::write_file(path, content);

    struct_GLOBAL_COMMON_TRAWL_AND_ARTIFACT_general_info info;
    info.debug_file_path_QString = path + QStringLiteral(".log");
    info.debug_mode_status_bool = true;
    info.debug_print_in_file_bool = true;
    plugin_static_function::set_essentials();
    plugin_static_function::set_general_info(info);
    const table_values read(path);
    plugin_static_function::set_essentials();
    QCOMPARE(read.records.size(), 4);
    QCOMPARE(read.records.at(1), (QByteArrayList{"1", ""}));
    QCOMPARE(read.records.at(3), (QByteArrayList{"3", QByteArray("44").repeated(30000)}));
    const QByteArray lines = content_of(info.debug_file_path_QString);
    QVERIFY2(lines.contains("[record_type_case] value not readable ----FAILED----: file " + path.toUtf8() +
                            ", table Values, record 1, column body"),
             lines.constData());
}

void test_ese_values::refuses_lies_data()
{
    QTest::addColumn<QByteArray>("mark");
    QTest::addColumn<int>("place"); // behind the mark's begin
    QTest::addColumn<QByteArray>("truth");
    QTest::addColumn<QByteArray>("lie");
    QTest::addColumn<int>("records"); // that are read all the same
    const auto row = [](const char *name, const char *mark, int place, const QByteArray &truth, const QByteArray &lie,
                        int records) { QTest::newRow(name) << QByteArray(mark) << place << truth << lie << records; };
    const auto number = [](int written) {
        return QByteArray(1, static_cast<char>(written)) + QByteArray(1, static_cast<char>(written >> 8));
    };
    // Where the last value of the second record ends, and where its tagged one begins, behind the flags.
    row("a value larger than the page", "first2", -2, number(7), number(0x7fff), 1);
    row("a value that ends before it begins", "first2", -2, number(7), number(1), 1);
    row("a tagged value behind the record", "tagged2", -3, number(0x4004), number(0x1fff), 1);
    // In the column's record of the catalog, in front of its name.
    constexpr int name_of_fixed = 37;
    constexpr int name_of_variable = 33;
    row("a column is a table", "second", 8 - name_of_variable, number(2), number(1), 0);
    row("a column twice", "second", 10 - name_of_variable, number(129), number(128), 0);
    row("of a later table", "second", 7 - name_of_variable, QByteArray(1, '\0'), "\1", 0);
    row("a larger number", "number", 18 - name_of_fixed, number(4), number(8), 0);
    row("much larger bytes", "guid", 19 - name_of_fixed, QByteArray(1, '\0'), "\x10", 0);
}

void test_ese_values::refuses_lies()
{
    QFETCH(QByteArray, mark);
    QFETCH(int, place);
    QFETCH(QByteArray, truth);
    QFETCH(QByteArray, lie);
    QFETCH(int, records);
    const QString path = new_path();
    write_table(path, "Values",
                {{"number", type::signed32},
                 {"guid", type::guid},
                 {"first", type::binary},
                 {"second", type::binary},
                 {"third", type::long_binary}},
                {{value::number(1), {}, value::bytes("first1"), value::bytes("b"), value::bytes("tagged1")},
                 {value::number(1), {}, value::bytes("first2"), value::bytes("b"), value::bytes("tagged2")}});
    QCOMPARE(table_values(path).records.size(), 2);
    QByteArray content = content_of(path);
    const int at = content.indexOf(mark) + place;
    QCOMPARE(content.mid(at, truth.size()), truth);
    content.replace(at, lie.size(), lie);
    evidence::write_file(path, content);
    const table_values read(path);
    QCOMPARE(read.result, records == 0 ? -1 : 0);
    const QByteArrayList sound{"1", "", QByteArray("first1").toHex(), "62", QByteArray("tagged1").toHex()};
    QCOMPARE(read.records, QList<QByteArrayList>({sound}).mid(0, records));
}

// Whatever is damaged: an end, no crash, and no more records than there were.
void test_ese_values::survives_damage()
{
    const QString path = new_path();
    const std::vector<value> record{value::number(1), value::text(long_text(200)),
                                    value::bytes(long_text(3000).toUtf8()).as_long_value()};
    write_table(path, "Values", {{"number", type::signed32}, {"text", type::long_text}, {"body", type::long_binary}},
                std::vector<std::vector<value>>(200, record));
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

QTEST_GUILESS_MAIN(test_ese_values)
#include "test_ese_values.moc"
