// ESE databases, read back with the library that the plug-in reads them with.
#include "evidence/ese_file.h"
#include "evidence/files.h"
#include "windows/ese_handles.h"

#include <QFile>
#include <QTemporaryDir>
#include <QtEndian>
#include <QtTest>

using evidence::ese_codepage;
using evidence::ese_column;
using evidence::ese_compression;
using evidence::ese_long_value_layout;
using evidence::ese_storage;
using evidence::ese_type;

namespace {

using written_value = evidence::ese_value;

QByteArray read_bytes(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

// A database that is open; a call that fails leaves an empty handle, on which the next ones fail.
class reader
{
public:
    explicit reader(const QString &path)
    {
        libesedb_file_t *made = nullptr;
        libesedb_file_initialize(&made, nullptr);
        file.reset(made);
        is_open = libesedb_file_open(made, QFile::encodeName(path).constData(), libesedb_get_access_flags_read(),
                                     nullptr) == 1;
    }

    ese_table_handle table(const QByteArray &name) const
    {
        libesedb_table_t *found = nullptr;
        libesedb_file_get_table_by_utf8_name(file.get(), reinterpret_cast<const uint8_t *>(name.constData()),
                                             static_cast<size_t>(name.size()), &found, nullptr);
        return ese_table_handle(found);
    }

    bool is_open = false;

private:
    ese_file_handle file;
};

int record_count(const ese_table_handle &table)
{
    int count = -1;
    libesedb_table_get_number_of_records(table.get(), &count, nullptr);
    return count;
}

ese_record_handle record_at(const ese_table_handle &table, int index)
{
    libesedb_record_t *record = nullptr;
    libesedb_table_get_record(table.get(), index, &record, nullptr);
    return ese_record_handle(record);
}

// A null QByteArray is an absent value.
QByteArray raw_value(const ese_record_handle &record, int entry)
{
    size_t size = 0;
    if (libesedb_record_get_value_data_size(record.get(), entry, &size, nullptr) != 1) {
        return QByteArray();
    }
    QByteArray bytes(static_cast<int>(size), '\0');
    libesedb_record_get_value_data(record.get(), entry, reinterpret_cast<uint8_t *>(bytes.data()), size, nullptr);
    return bytes;
}

QString text_value(const ese_record_handle &record, int entry)
{
    size_t size = 0;
    if (libesedb_record_get_value_utf8_string_size(record.get(), entry, &size, nullptr) != 1) {
        return QString();
    }
    QByteArray bytes(static_cast<int>(size), '\0');
    libesedb_record_get_value_utf8_string(record.get(), entry, reinterpret_cast<uint8_t *>(bytes.data()), size,
                                          nullptr);
    return QString::fromUtf8(bytes.constData());
}

QByteArray long_value(const ese_record_handle &record, int entry)
{
    libesedb_long_value_t *found = nullptr;
    if (libesedb_record_get_long_value(record.get(), entry, &found, nullptr) != 1) {
        return QByteArray();
    }
    const ese_long_value_handle value(found);
    size64_t size = 0;
    libesedb_long_value_get_data_size(found, &size, nullptr);
    QByteArray bytes(static_cast<int>(size), '\0');
    libesedb_long_value_get_data(found, reinterpret_cast<uint8_t *>(bytes.data()), size, nullptr);
    return bytes;
}

QByteArray many_bytes(int size, int seed)
{
    QByteArray bytes(size, '\0');
    for (int index = 0; index < size; ++index) {
        bytes[index] = static_cast<char>(index / 251 + index * 7 + seed);
    }
    return bytes;
}

// A column, a value and its bytes in the record. The columns are told out of order: a reader finds the fixed ones
// first, then the variable and the tagged ones.
std::vector<std::tuple<ese_column, written_value, QByteArray>> every_type()
{
    const QByteArray guid("0123456789abcdef");
    return {
        {{"nil", ese_type::none}, written_value::bytes("rest"), "rest"},
        {{"long binary", ese_type::long_binary}, written_value::bytes("much"), "much"},
        {{"boolean", ese_type::boolean}, written_value::boolean(true), "\xff"},
        {{"byte", ese_type::unsigned8}, written_value::number(0xfe), "\xfe"},
        {{"short", ese_type::signed16}, written_value::number(-2), "\xfe\xff"},
        {{"long", ese_type::signed32}, written_value::number(-3), "\xfd\xff\xff\xff"},
        {{"currency", ese_type::currency}, written_value::number(-4), "\xfc\xff\xff\xff\xff\xff\xff\xff"},
        {{"single", ese_type::float32}, written_value::number(-1.5), QByteArray("\0\0\xc0\xbf", 4)},
        {{"double", ese_type::float64}, written_value::number(2.0), QByteArray("\0\0\0\0\0\0\0\x40", 8)},
        {{"time", ese_type::date_time},
         written_value::number(Q_INT64_C(0x01d5010203040506)),
         "\x06\x05\x04\x03\x02\x01\xd5\x01"},
        {{"text", ese_type::text}, written_value::text(QStringLiteral("ab")), QByteArray("a\0b\0", 4)},
        {{"binary", ese_type::binary}, written_value::bytes("few"), "few"},
        {{"fixed text", ese_type::text, ese_codepage::ascii, ese_storage::fixed, 5},
         written_value::text(QStringLiteral("abc")),
         "abc  "},
        {{"unsigned long", ese_type::unsigned32}, written_value::number(0xfffffffb), "\xfb\xff\xff\xff"},
        {{"long long", ese_type::signed64}, written_value::number(-6), "\xfa\xff\xff\xff\xff\xff\xff\xff"},
        {{"guid", ese_type::guid}, written_value::bytes(guid), guid},
        {{"unsigned short", ese_type::unsigned16}, written_value::number(0xfff9), "\xf9\xff"},
        {{"long text", ese_type::long_text}, written_value::text(QStringLiteral("c")), QByteArray("c\0", 2)},
        {{"tagged number", ese_type::signed32, ese_codepage::utf16, ese_storage::tagged},
         written_value::number(7),
         QByteArray("\7\0\0\0", 4)},
    };
}

// The position of each set bit goes into the lower half, its complement into the upper one.
quint32 correction_of(const QByteArray &page)
{
    const quint32 mask = static_cast<quint32>(page.size()) * 8 - 1;
    quint32 correction = 0;
    for (quint32 bit = 8 * 8; bit <= mask; ++bit) {
        const bool set = (page.at(static_cast<int>(bit / 8)) >> bit % 8 & 1) != 0;
        correction ^= set ? (bit ^ mask) << 16 | bit : 0;
    }
    return correction;
}

} // namespace

class test_ese_file : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void holds_every_type_data();
    void holds_every_type();
    void holds_many_records();
    void holds_text_of_codepages();
    void holds_long_values_data();
    void holds_long_values();
    void says_where_ordinary_long_values_lie();
    void compresses_values();
    void has_checksums();
    void refuses_what_cannot_be_stored();

private:
    QString path(const char *name) const { return folder.filePath(QString::fromLatin1(name)); }

    QTemporaryDir folder;
};

void test_ese_file::holds_every_type_data()
{
    QTest::addColumn<int>("page_size");
    QTest::addColumn<int>("revision");
    QTest::newRow("windows-xp") << 4096 << 0x09;
    QTest::newRow("windows-vista") << 8192 << 0x0c;
    QTest::newRow("windows-7") << 8192 << 0x11;
    QTest::newRow("16k") << 16384 << 0x11;
    QTest::newRow("32k") << 32768 << 0x14;
}

void test_ese_file::holds_every_type()
{
    QFETCH(int, page_size);
    QFETCH(int, revision);
    const QString file_path = folder.filePath(QString::fromLatin1(QTest::currentDataTag()));
    std::vector<ese_column> described;
    std::vector<written_value> values;
    QHash<QByteArray, std::pair<ese_type, QByteArray>> expected;
    for (const auto &[column, value, bytes] : every_type()) {
        described.push_back(column);
        values.push_back(value);
        expected.insert(column.name, {column.type, bytes});
    }
    evidence::ese_file file(file_path, {page_size, static_cast<quint32>(revision)});
    evidence::ese_table table = file.add_table("Every type", described);
    table.add_record(values);
    table.add_record({});
    file.finish();

    const reader opened(file_path);
    QVERIFY(opened.is_open);
    const ese_table_handle read = opened.table("Every type");
    QCOMPARE(record_count(read), 2);
    const ese_record_handle full = record_at(read, 0);
    const ese_record_handle empty = record_at(read, 1);
    for (int entry = 0; entry < expected.size(); ++entry) {
        QByteArray name(64, '\0');
        QCOMPARE(libesedb_record_get_utf8_column_name(full.get(), entry, reinterpret_cast<uint8_t *>(name.data()),
                                                      static_cast<size_t>(name.size()), nullptr),
                 1);
        name.truncate(name.indexOf('\0'));
        uint32_t type = 0xff;
        QCOMPARE(libesedb_record_get_column_type(full.get(), entry, &type, nullptr), 1);
        QCOMPARE(type, static_cast<uint32_t>(expected.value(name).first));
        QCOMPARE(raw_value(full, entry), expected.value(name).second);
        QVERIFY2(raw_value(empty, entry).isEmpty(), name.constData());
    }
}

// Records of 400 bytes, nine on a page: over two thousand leaves, and two levels of branches above them.
void test_ese_file::holds_many_records()
{
    constexpr int records = 20000;
    const auto text_of = [](int index) { return QByteArray::number(index).rightJustified(400, 'x'); };
    evidence::ese_file file(path("many"), {4096, 0x0c, false});
    evidence::ese_table wide = file.add_table(
        "Wide", {{"number", ese_type::signed32}, {"text", ese_type::long_text, ese_codepage::windows_1252}});
    evidence::ese_table narrow = file.add_table("Narrow", {{"number", ese_type::signed32}});
    for (int index = 0; index < records; ++index) {
        QCOMPARE(wide.add_record({written_value::number(index), written_value::bytes(text_of(index))}), index);
        narrow.add_record({written_value::number(-index)});
    }
    file.finish();

    const reader opened(path("many"));
    QVERIFY(opened.is_open);
    const ese_table_handle wide_table = opened.table("Wide");
    const ese_table_handle narrow_table = opened.table("Narrow");
    QCOMPARE(record_count(wide_table), records);
    QCOMPARE(record_count(narrow_table), records);
    for (int index = 0; index < records; ++index) {
        const ese_record_handle record = record_at(wide_table, index);
        QCOMPARE(qFromLittleEndian<qint32>(raw_value(record, 0).leftJustified(4).constData()), index);
        QCOMPARE(raw_value(record, 1), text_of(index));
        QCOMPARE(qFromLittleEndian<qint32>(raw_value(record_at(narrow_table, index), 0).leftJustified(4).constData()),
                 -index);
    }
}

void test_ese_file::holds_text_of_codepages()
{
    const QString western = QStringLiteral("Grüße für 5 €");
    const QString plain = QStringLiteral("plain");
    evidence::ese_file file(path("codepages"));
    file.add_table("Texts", {{"utf16", ese_type::text},
                             {"western", ese_type::text, ese_codepage::windows_1252},
                             {"ascii", ese_type::text, ese_codepage::ascii}})
        .add_record({written_value::text(western), written_value::text(western), written_value::text(plain)});
    file.finish();

    const reader opened(path("codepages"));
    const ese_record_handle record = record_at(opened.table("Texts"), 0);
    QCOMPARE(text_value(record, 0), western);
    QCOMPARE(text_value(record, 1), western);
    QCOMPARE(raw_value(record, 1), QByteArray("Gr\xfc\xdf"
                                              "e f\xfcr 5 \x80"));
    QCOMPARE(text_value(record, 2), plain);
}

void test_ese_file::holds_long_values_data()
{
    QTest::addColumn<int>("page_size");
    QTest::newRow("long-4k") << 4096;
    QTest::newRow("long-8k") << 8192;
    QTest::newRow("long-32k") << 32768;
}

// Sizes around that of a segment, and a record that is too large without its long value.
void test_ese_file::holds_long_values()
{
    QFETCH(int, page_size);
    const int segment = std::min(page_size, 8192) - 82;
    const std::vector<int> sizes{1, 100, segment - 1, segment, segment + 1, 5 * segment, 40000};
    const QString file_path = folder.filePath(QString::fromLatin1(QTest::currentDataTag()));
    evidence::ese_file file(file_path, {page_size});
    evidence::ese_table table =
        file.add_table("Long", {{"value", ese_type::long_binary}}, ese_long_value_layout::readable_by_libesedb_2018);
    constexpr int rounds = 20;
    for (int round = 0; round < rounds; ++round) {
        for (const int size : sizes) {
            const written_value value = written_value::bytes(many_bytes(size, round));
            table.add_record({size > page_size ? value : value.as_long_value()});
        }
    }
    file.finish();

    const reader opened(file_path);
    const ese_table_handle read = opened.table("Long");
    QCOMPARE(record_count(read), rounds * static_cast<int>(sizes.size()));
    for (int round = 0, index = 0; round < rounds; ++round) {
        for (const int size : sizes) {
            const ese_record_handle record = record_at(read, index++);
            QCOMPARE(libesedb_record_is_long_value(record.get(), 0, nullptr), 1);
            QCOMPARE(long_value(record, 0), many_bytes(size, round));
        }
    }
}

// The release that is packaged does not find them, so what leads to them is looked at: the id, and the tree's root.
void test_ese_file::says_where_ordinary_long_values_lie()
{
    evidence::ese_file file(path("ordinary"));
    evidence::ese_table table = file.add_table("Long", {{"value", ese_type::long_text}});
    table.add_record({written_value::text(QStringLiteral("first")).as_long_value()});
    table.add_record({written_value::text(QStringLiteral("second")).as_long_value()});
    file.finish();

    const reader opened(path("ordinary"));
    const ese_record_handle record = record_at(opened.table("Long"), 1);
    QCOMPARE(libesedb_record_is_long_value(record.get(), 0, nullptr), 1);
    QCOMPARE(raw_value(record, 0), QByteArray("\2\0\0\0", 4));

    const ese_table_handle catalog = opened.table("MSysObjects");
    const ese_record_handle entry = record_at(catalog, record_count(catalog) - 1);
    constexpr int type_entry = 1;
    constexpr int root_entry = 3;
    constexpr int header_bytes = 40;
    QCOMPARE(raw_value(entry, type_entry), QByteArray("\4\0", 2));
    const int root = qFromLittleEndian<qint32>(raw_value(entry, root_entry).leftJustified(4).constData());
    const QByteArray page = read_bytes(path("ordinary")).mid((root + 1) * 8192, 8192);
    // Root header; id and size of the first value; its id, offset and text; the same of the second one.
    const QByteArray tree = QByteArray::fromHex("0400 00000001 01000000 0a000000  0800 0000000100000000") +
                            QByteArray("f\0i\0r\0s\0t\0", 10) +
                            QByteArray::fromHex("0400 00000002 01000000 0c000000  0800 0000000200000000") +
                            QByteArray("s\0e\0c\0o\0n\0d\0", 12);
    QCOMPARE(page.mid(header_bytes + 16, tree.size()), tree);
}

void test_ese_file::compresses_values()
{
    const QByteArray letters = QByteArray("What is said thrice is true, what is said thrice is true. ").repeated(40);
    const QByteArray run(3001, 'z'); // a reference whose length takes two bytes of its own
    const std::vector<std::pair<QByteArray, ese_compression>> cases{
        {letters + "!", ese_compression::seven_bit_ascii},
        {letters + run, ese_compression::lzxpress},
        {many_bytes(600, 1) + many_bytes(600, 1), ese_compression::lzxpress},
    };
    evidence::ese_file file(path("compressed"));
    evidence::ese_table table =
        file.add_table("Compressed", {{"bytes", ese_type::long_binary}, {"text", ese_type::long_text}});
    for (const auto &[bytes, way] : cases) {
        const written_value text = written_value::text(QString::fromLatin1(letters));
        table.add_record(
            {written_value::bytes(bytes).compressed(way), text.compressed(ese_compression::seven_bit_unicode)});
    }
    file.finish();

    QCOMPARE(read_bytes(path("compressed")).count("thrice"), 1); // LZXPRESS keeps the first of its kind as it is
    const reader opened(path("compressed"));
    const ese_table_handle read = opened.table("Compressed");
    for (size_t index = 0; index < cases.size(); ++index) {
        const QByteArray &bytes = cases[index].first;
        const ese_record_handle record = record_at(read, static_cast<int>(index));
        size_t size = 0;
        QCOMPARE(libesedb_record_get_value_binary_data_size(record.get(), 0, &size, nullptr), 1);
        QByteArray found(static_cast<int>(size), '\0');
        libesedb_record_get_value_binary_data(record.get(), 0, reinterpret_cast<uint8_t *>(found.data()), size,
                                              nullptr);
        QCOMPARE(found, bytes);
        QCOMPARE(text_value(record, 1), QString::fromLatin1(letters));
    }
}

void test_ese_file::has_checksums()
{
    constexpr int page_size = 4096;
    const auto write = [this](const char *name, quint32 revision) {
        evidence::ese_file file(path(name), {page_size, revision, false});
        file.add_table("Some", {{"number", ese_type::signed32}}).add_record({written_value::number(1)});
        file.finish();
        return read_bytes(path(name));
    };
    const auto number_at = [](const QByteArray &bytes, int offset) {
        return qFromLittleEndian<quint32>(bytes.constData() + offset);
    };
    const QByteArray corrected = write("corrected", 0x11);
    QCOMPARE(corrected.left(page_size), corrected.mid(page_size, page_size));
    QCOMPARE(number_at(corrected, 52), 2U); // not cleanly shut down
    const QByteArray old = write("old", 0x09);
    for (const quint32 number : {1U, 2U, 3U, 4U, 5U, 24U}) {
        const auto page_of = [number](const QByteArray &bytes) {
            return bytes.mid(static_cast<int>(number + 1) * page_size, page_size);
        };
        const QByteArray page = page_of(corrected);
        quint32 sum = number;
        for (int offset = 8; offset < page_size; offset += 4) {
            sum ^= number_at(page, offset);
        }
        QCOMPARE(number_at(page, 0), sum);
        QCOMPARE(number_at(page, 4), correction_of(page));
        QCOMPARE(number_at(page_of(old), 4), number);
    }
}

void test_ese_file::refuses_what_cannot_be_stored()
{
    evidence::ese_file file(path("refused"));
    QVERIFY_EXCEPTION_THROWN(evidence::ese_file(path("refused")), evidence::evidence_error);
    evidence::ese_table table = file.add_table(
        "Some",
        {{"ascii", ese_type::text, ese_codepage::ascii}, {"number", ese_type::unsigned8}, {"short", ese_type::binary}});
    const auto refuses = [&table](const std::vector<written_value> &values) {
        try {
            table.add_record(values);
        } catch (const evidence::evidence_error &) {
            return true;
        }
        return false;
    };
    QVERIFY(refuses({written_value::text(QStringLiteral("ä"))}));
    QVERIFY(refuses({{}, written_value::number(256)}));
    QVERIFY(refuses({{}, written_value::text(QStringLiteral("1"))}));
    QVERIFY(refuses({{}, {}, written_value::bytes(QByteArray(256, 'x'))}));
    QVERIFY(refuses({{}, {}, written_value::bytes("x").as_long_value()}));
    QVERIFY(refuses({{}, {}, {}, {}}));
    QCOMPARE(table.add_record({}), 0);
}

QTEST_APPLESS_MAIN(test_ese_file)
#include "test_ese_file.moc"
