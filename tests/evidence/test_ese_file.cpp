// ESE databases, read back with the library that the plug-in reads them with. What each type of column holds is
// compared in tests/windows/test_ese_values.cpp.
#include "evidence/files.h"
#include "tests/evidence/ese_tables.h"

#include <QTemporaryDir>
#include <QtEndian>
#include <QtTest>

using codepage = evidence::ese_codepage;
using compression = evidence::ese_compression;
using type = evidence::ese_type;
using value = evidence::ese_value;

namespace {

QByteArray long_value(const ese_record_handle &record, int entry)
{
    libesedb_long_value_t *found = nullptr;
    if (libesedb_record_get_long_value(record.get(), entry, &found, nullptr) != 1) {
        return QByteArray();
    }
    const ese_long_value_handle handle(found);
    size64_t size = 0;
    libesedb_long_value_get_data_size(found, &size, nullptr);
    QByteArray bytes(static_cast<int>(size), '\0');
    libesedb_long_value_get_data(found, reinterpret_cast<uint8_t *>(bytes.data()), size, nullptr);
    return bytes;
}

QByteArray unfolded_value(const ese_record_handle &record, int entry)
{
    size_t size = 0;
    libesedb_record_get_value_binary_data_size(record.get(), entry, &size, nullptr);
    QByteArray bytes(static_cast<int>(size), '\0');
    libesedb_record_get_value_binary_data(record.get(), entry, reinterpret_cast<uint8_t *>(bytes.data()), size,
                                          nullptr);
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

quint32 number_at(const QByteArray &bytes, int offset)
{
    return qFromLittleEndian<quint32>(bytes.constData() + offset);
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
    void holds_long_values();
    void says_where_ordinary_long_values_lie();
    void compresses_values();
    void has_corrections_and_two_headers();
    void refuses_what_cannot_be_stored();

private:
    QString path(const char *name) const { return folder.filePath(QString::fromLatin1(name)); }

    QTemporaryDir folder;
};

// Sizes around that of a segment, and a record that is too large without its long value.
void test_ese_file::holds_long_values()
{
    constexpr int rounds = 20;
    for (const int page_size : {4096, 8192, 32768}) {
        const int segment = std::min(page_size, 8192) - 82;
        const std::vector<int> sizes{1, 100, segment - 1, segment, segment + 1, 5 * segment, 40000};
        const QString file_path = folder.filePath(QString::number(page_size));
        evidence::ese_file file(file_path, {page_size});
        evidence::ese_table table = file.add_table("Long", {{"value", type::long_binary}},
                                                   evidence::ese_long_value_layout::readable_by_libesedb_2018);
        for (int index = 0; index < rounds * static_cast<int>(sizes.size()); ++index) {
            const int size = sizes[static_cast<size_t>(index) % sizes.size()];
            const value written = value::bytes(many_bytes(size, index));
            table.add_record({size > page_size ? written : written.as_long_value()});
        }
        file.finish();

        const ese_file_handle opened = opened_file(file_path);
        const ese_table_handle read = table_of(opened.get(), "Long");
        QCOMPARE(record_count(read), rounds * static_cast<int>(sizes.size()));
        for (int index = 0; index < record_count(read); ++index) {
            const ese_record_handle record = record_at(read, index);
            QCOMPARE(libesedb_record_is_long_value(record.get(), 0, nullptr), 1);
            QCOMPARE(long_value(record, 0), many_bytes(sizes[static_cast<size_t>(index) % sizes.size()], index));
        }
    }
}

// The release that is packaged does not find them, so what leads to them is looked at: the id, and the tree's root.
void test_ese_file::says_where_ordinary_long_values_lie()
{
    write_table(path("ordinary"), "Long", {{"value", type::long_text}},
                {{value::text(QStringLiteral("first")).as_long_value()},
                 {value::text(QStringLiteral("second")).as_long_value()}});
    const ese_file_handle opened = opened_file(path("ordinary"));
    const ese_record_handle record = record_at(table_of(opened.get(), "Long"), 1);
    QCOMPARE(libesedb_record_is_long_value(record.get(), 0, nullptr), 1);
    QCOMPARE(raw_value(record, 0), QByteArray("\2\0\0\0", 4));

    const ese_table_handle catalog = table_of(opened.get(), "MSysObjects");
    const ese_record_handle entry = record_at(catalog, record_count(catalog) - 1);
    constexpr int type_entry = 1;
    constexpr int root_entry = 3;
    constexpr int header_bytes = 40;
    QCOMPARE(raw_value(entry, type_entry), QByteArray("\4\0", 2));
    const int root = static_cast<int>(number_at(raw_value(entry, root_entry).leftJustified(4), 0));
    const QByteArray page = content_of(path("ordinary")).mid((root + 1) * 8192, 8192);
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
    const QString wide = QString::fromLatin1(letters);
    const QByteArray run(3001, 'z'); // a reference whose length takes two bytes of its own
    const std::vector<std::pair<QByteArray, compression>> cases{
        {letters + "!", compression::seven_bit_ascii},
        {letters + run, compression::lzxpress},
        {many_bytes(600, 1) + many_bytes(600, 1), compression::lzxpress},
        {QByteArray(reinterpret_cast<const char *>(wide.utf16()), wide.size() * 2), compression::seven_bit_unicode},
    };
    std::vector<std::vector<value>> records;
    for (const auto &[bytes, way] : cases) {
        records.push_back({value::bytes(bytes).compressed(way)});
    }
    write_table(path("compressed"), "Compressed", {{"bytes", type::long_binary}}, records);
    QCOMPARE(content_of(path("compressed")).count("thrice"), 1); // LZXPRESS keeps the first of its kind as it is
    const ese_file_handle opened = opened_file(path("compressed"));
    const ese_table_handle read = table_of(opened.get(), "Compressed");
    for (size_t index = 0; index < cases.size(); ++index) {
        const ese_record_handle record = record_at(read, static_cast<int>(index));
        // The library leaves the zeros of the wide letters out.
        const bool is_wide = cases[index].second == compression::seven_bit_unicode;
        QCOMPARE(unfolded_value(record, 0), is_wide ? letters : cases[index].first);
    }
}

// The library looks at the sums, but not at these.
void test_ese_file::has_corrections_and_two_headers()
{
    constexpr int page_size = 4096;
    write_table(path("some"), "Some", {{"number", type::signed32}}, {{value::number(1)}}, {page_size, 0x11, false});
    const QByteArray content = content_of(path("some"));
    QCOMPARE(content.left(page_size), content.mid(page_size, page_size));
    QCOMPARE(number_at(content, 52), 2U); // not cleanly shut down
    for (const int number : {1, 5, 24}) {
        const QByteArray page = content.mid((number + 1) * page_size, page_size);
        QCOMPARE(number_at(page, 4), correction_of(page));
    }
}

void test_ese_file::refuses_what_cannot_be_stored()
{
    evidence::ese_file file(path("refused"));
    QVERIFY_EXCEPTION_THROWN(evidence::ese_file(path("refused")), evidence::evidence_error);
    evidence::ese_table table = file.add_table(
        "Some", {{"ascii", type::text, codepage::ascii}, {"number", type::unsigned8}, {"short", type::binary}});
    const std::vector<std::vector<value>> refused{
        {value::text(QStringLiteral("ä"))},          {{}, value::number(256)},
        {{}, value::text(QStringLiteral("1"))},      {{}, {}, value::bytes(QByteArray(256, 'x'))},
        {{}, {}, value::bytes("x").as_long_value()}, {{}, {}, {}, {}},
    };
    for (const std::vector<value> &values : refused) {
        QVERIFY_EXCEPTION_THROWN(table.add_record(values), evidence::evidence_error);
    }
    QCOMPARE(table.add_record({}), 0);
}

QTEST_APPLESS_MAIN(test_ese_file)
#include "test_ese_file.moc"
