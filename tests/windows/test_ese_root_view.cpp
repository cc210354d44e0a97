// The pages of an ESE file as the library is shown them: the records stay as they were written, and what is no sound
// root stays byte for byte. Long values are read from the pages beside the library.
#include "evidence/ese_file.h"
#include "evidence/files.h"
#include "windows/ese_file.h"
#include "windows/ese_long_values.h"
#include "windows/ese_root_view.h"

#include <QElapsedTimer>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>
#include <QtEndian>

#include <functional>

#include <unistd.h>

using evidence::ese_file_options;
using evidence::ese_type;
using evidence::ese_value;

namespace {

constexpr int flags_offset = 36;
constexpr quint32 page_is_root = 0x1;
constexpr quint32 page_is_leaf = 0x2;
constexpr quint32 page_is_parent_of_leaf = 0x4;
constexpr quint32 page_is_of_long_values = 0x80;

quint32 flags_of(const QByteArray &content, int page)
{
    return qFromLittleEndian<quint32>(content.constData() + page + flags_offset);
}

// Out: where the pages begin whose flags, as far as the mask has them, are these.
QVector<int> pages_with(const QByteArray &content, int page_size, quint32 mask, quint32 flags)
{
    QVector<int> pages;
    for (int page = 2 * page_size; page + page_size <= content.size(); page += page_size) {
        if ((flags_of(content, page) & mask) == flags) {
            pages.append(page);
        }
    }
    return pages;
}

QByteArray content_of(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

// Each record has a leaf for itself.
QByteArray record_bytes(int index, int page_size)
{
    return QByteArray::number(index).rightJustified(page_size * 6 / 10, 'x');
}

void write_records(const QString &path, const ese_file_options &options, int count)
{
    evidence::ese_file file(path, options);
    evidence::ese_table table = file.add_table("Records", {{"value", ese_type::long_binary}});
    for (int i = 0; i < count; ++i) {
        table.add_record({ese_value::bytes(record_bytes(i, options.page_size))});
    }
    file.finish();
}

QByteArray read_from(const ese_root_view &view, qint64 size, qint64 place)
{
    QByteArray bytes(static_cast<int>(size), '\0');
    bytes.truncate(static_cast<int>(view.read(bytes.data(), static_cast<size_t>(size), place)));
    return bytes;
}

} // namespace

class test_ese_root_view : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void keeps_the_records_data();
    void keeps_the_records();
    void shows_all_else_as_it_stands_data();
    void shows_all_else_as_it_stands();
    void deleted_long_values_end();

private:
    QString new_path() { return folder.filePath(QStringLiteral("%1.vol").arg(++file_count)); }

    QTemporaryDir folder;
    int file_count = 0;
};

Q_DECLARE_METATYPE(ese_file_options)

void test_ese_root_view::keeps_the_records_data()
{
    QTest::addColumn<ese_file_options>("options");
    QTest::addColumn<int>("count");
    QTest::addColumn<int>("levels");
    // An entry of a branch takes 10 to 14 bytes, so a root leads to a page's size / 14 to / 10 pages at most.
    const auto both = [](const char *name, const ese_file_options &options) {
        QTest::newRow(qPrintable(QString::fromLatin1(name) + QLatin1String(", 2 levels"))) << options << 50 << 2;
        QTest::newRow(qPrintable(QString::fromLatin1(name) + QLatin1String(", 3 levels")))
            << options << options.page_size / 9 << 3;
    };
    both("4k, old sum", {4096, 0x09});
    both("8k, old sum", {8192, 0x0a});
    both("4k", {4096, 0x0c});
    both("8k", {8192, 0x11});
    both("8k, not shut down", {8192, 0x11, false});
    both("16k", {16384, 0x11});
    both("32k", {32768, 0x14});
}

void test_ese_root_view::keeps_the_records()
{
    QFETCH(ese_file_options, options);
    QFETCH(int, count);
    QFETCH(int, levels);
    const QString path = new_path();
    write_records(path, options, count);
    const QByteArray content = content_of(path);
    const QVector<int> roots = pages_with(content, options.page_size, page_is_root | page_is_leaf, page_is_root);
    QCOMPARE(roots.size(), 1);
    QCOMPARE((flags_of(content, roots.first()) & page_is_parent_of_leaf) != 0, levels == 2);

    ese_file file;
    libesedb_error_t *error = nullptr;
    QVERIFY(file.open(path, error) == ese_file::opening::done);
    QVERIFY(read_from(ese_root_view(file.bytes().get()), options.page_size, roots.first()) !=
            content.mid(roots.first(), options.page_size));
    libesedb_table_t *handle = nullptr;
    QCOMPARE(libesedb_file_get_table_by_utf8_name(file.handle(), reinterpret_cast<const uint8_t *>("Records"), 7,
                                                  &handle, nullptr),
             1);
    const ese_table_handle table(handle);
    int read_count = 0;
    QCOMPARE(libesedb_table_get_number_of_records(table.get(), &read_count, nullptr), 1);
    QCOMPARE(read_count, count);
    for (int i = 0; i < count; ++i) {
        libesedb_record_t *record_handle = nullptr;
        QCOMPARE(libesedb_table_get_record(table.get(), i, &record_handle, nullptr), 1);
        const ese_record_handle record(record_handle);
        QByteArray value(options.page_size, '\0');
        size_t size = 0;
        QCOMPARE(libesedb_record_get_value_data_size(record.get(), 0, &size, nullptr), 1);
        QVERIFY(size <= static_cast<size_t>(value.size()));
        libesedb_record_get_value_data(record.get(), 0, reinterpret_cast<uint8_t *>(value.data()), size, nullptr);
        value.truncate(static_cast<int>(size));
        QVERIFY2(value == record_bytes(i, options.page_size), qPrintable(QString::number(i)));
    }
}

using change = std::function<void(QByteArray &content, int root)>;
Q_DECLARE_METATYPE(change)

void test_ese_root_view::shows_all_else_as_it_stands_data()
{
    QTest::addColumn<ese_file_options>("options");
    QTest::addColumn<change>("change_file");
    QTest::addColumn<bool>("is_root_shown_as_it_is");
    QTest::addColumn<bool>("has_pages");
    const auto flipped = [](int offset) {
        return change([offset](QByteArray &content, int root) { content[root + offset] = content[root + offset] ^ 1; });
    };
    constexpr int page_size_offset = 236;
    const auto page_size_of = [](quint32 size) {
        return change([size](QByteArray &content, int) { qToLittleEndian(size, content.data() + page_size_offset); });
    };
    QTest::newRow("sound") << ese_file_options() << change([](QByteArray &, int) {}) << false << true;
    QTest::newRow("part of a page behind")
        << ese_file_options() << change([](QByteArray &content, int) { content += QByteArray(99, 'x'); }) << false
        << true;
    QTest::newRow("wrong sum") << ese_file_options() << flipped(0) << true << true;
    QTest::newRow("wrong correction") << ese_file_options() << flipped(4) << true << true;
    QTest::newRow("wrong content") << ese_file_options() << flipped(60) << true << true;
    QTest::newRow("wrong old sum") << ese_file_options{4096, 0x09} << flipped(0) << true << true;
    QTest::newRow("wrong content, old sum") << ese_file_options{4096, 0x09} << flipped(60) << true << true;
    QTest::newRow("wrong sum of a quarter") << ese_file_options{16384, 0x11} << flipped(48) << true << true;
    QTest::newRow("wrong last quarter") << ese_file_options{16384, 0x11} << flipped(16380) << true << true;
    for (const quint32 size : {0U, 1024U, 8191U, 65536U, 0xffffffffU}) {
        QTest::newRow(qPrintable(QStringLiteral("page size %1").arg(size)))
            << ese_file_options() << page_size_of(size) << true << false;
    }
}

void test_ese_root_view::shows_all_else_as_it_stands()
{
    QFETCH(ese_file_options, options);
    QFETCH(change, change_file);
    QFETCH(bool, is_root_shown_as_it_is);
    QFETCH(bool, has_pages);
    const QString written = new_path();
    write_records(written, options, 20);
    QByteArray content = content_of(written);
    const int size = options.page_size;
    const QVector<int> roots = pages_with(content, size, page_is_root | page_is_leaf, page_is_root);
    QCOMPARE(roots.size(), 1);
    change_file(content, roots.first());
    const QString path = new_path();
    evidence::write_file(path, content);
    const file_descriptor file = open_source_file(path);
    const ese_root_view view(file.get());

    // Two pages of head stand in front of page 1; the child of a root stands as far behind it as the file has pages.
    const int page_count = (content.size() + size - 1) / size;
    QCOMPARE(qint64{view.size()}, has_pages ? qint64{2} * (page_count + 2) * size : qint64{content.size()});
    for (int page = 0; page < content.size(); page += size) {
        const bool is_same = page != roots.first() || is_root_shown_as_it_is;
        QCOMPARE(read_from(view, size, page) == content.mid(page, size), is_same);
        QCOMPARE(read_from(view, size, page + qint64{page_count} * size).isEmpty(), is_same);
        QCOMPARE(read_from(view, size, page + 100), content.mid(page + 100, size));
        QCOMPARE(read_from(view, 2 * size, page), content.mid(page, 2 * size));
        QCOMPARE(read_from(view, size / 2, page), content.mid(page, size / 2));
    }
    QVERIFY(read_from(view, size, view.size()).isEmpty());
    QVERIFY(read_from(view, size, view.size() + size).isEmpty());
}

// A circle of pages without a value in use: each of the values leads into it.
void test_ese_root_view::deleted_long_values_end()
{
    constexpr int page_size = 8192;
    constexpr int count = 200;
    constexpr quint16 tag_is_deleted = 0x4000;
    const QString written = new_path();
    evidence::ese_file store(written, {page_size, 0x11});
    evidence::ese_table table = store.add_table("Long", {{"value", ese_type::long_binary}});
    for (int i = 0; i < count; ++i) {
        table.add_record({ese_value::bytes(record_bytes(i, page_size)).as_long_value()});
    }
    store.finish();
    QByteArray content = content_of(written);
    const QVector<int> roots =
        pages_with(content, page_size, page_is_root | page_is_of_long_values, page_is_root | page_is_of_long_values);
    QCOMPARE(roots.size(), 1);
    const quint32 root = static_cast<quint32>(roots.first() / page_size - 1);
    const auto number_of = [](int i) { return QByteArray(1, static_cast<char>(i + 1)) + QByteArray(3, '\0'); };
    {
        const file_descriptor file = open_source_file(written);
        QCOMPARE(ese_long_values(file, page_size, root).value(number_of(7)).value_or(QByteArray()),
                 record_bytes(7, page_size));
    }
    const QVector<int> leaves =
        pages_with(content, page_size, page_is_leaf | page_is_of_long_values, page_is_leaf | page_is_of_long_values);
    for (const int leaf : leaves) {
        const int tags = qFromLittleEndian<quint16>(content.constData() + leaf + 34);
        for (int tag = 1; tag < tags; ++tag) {
            char *place = content.data() + leaf + page_size - 4 * (tag + 1) + 2;
            qToLittleEndian<quint16>(qFromLittleEndian<quint16>(place) | tag_is_deleted, place);
        }
        if (qFromLittleEndian<quint32>(content.constData() + leaf + 20) == 0) {
            qToLittleEndian(static_cast<quint32>(leaves.first() / page_size - 1), content.data() + leaf + 20);
        }
    }
    const QString path = new_path();
    evidence::write_file(path, content);
    const file_descriptor file = open_source_file(path);
    ese_long_values values(file, page_size, root);
    QElapsedTimer timer;
    timer.start();
    for (int i = 0; i < count; ++i) {
        QVERIFY(!values.value(number_of(i)));
    }
    QVERIFY2(timer.elapsed() < 10000, qPrintable(QString::number(timer.elapsed())));
}

QTEST_GUILESS_MAIN(test_ese_root_view)
#include "test_ese_root_view.moc"
