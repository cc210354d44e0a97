// The pages of an ESE file as the library is shown them: the records stay as they were written, and what is no sound
// root stays byte for byte. Long values are read from the pages beside the library.
#include "evidence/files.h"
#include "tests/windows/ese_leaf_records.h"
#include "windows/ese_file.h"
#include "windows/ese_long_values.h"
#include "windows/ese_root_view.h"

#include <QElapsedTimer>
#include <QTemporaryDir>
#include <QTest>
#include <QtEndian>

#include <functional>

using evidence::ese_file_options;

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
    const ese_file_options all[] = {{4096, 0x09},  {8192, 0x0a},  {4096, 0x0c},       {8192, 0x11},
                                    {16384, 0x11}, {32768, 0x14}, {8192, 0x11, false}};
    for (const ese_file_options &options : all) {
        QTest::addRow("%d bytes, revision %x%s", options.page_size, options.format_revision,
                      options.cleanly_shut_down ? "" : ", not shut down")
            << options;
    }
}

void test_ese_root_view::keeps_the_records()
{
    QFETCH(ese_file_options, options);
    // An entry of a branch takes 10 to 14 bytes: below one root the leaves, or one more level.
    for (const int count : {50, options.page_size / 9}) {
        const QString path = new_path();
        write_records(path, options, count);
        const QByteArray content = content_of(path);
        const QVector<int> roots = pages_with(content, options.page_size, page_is_root | page_is_leaf, page_is_root);
        QCOMPARE(roots.size(), 1);
        QCOMPARE((flags_of(content, roots.first()) & page_is_parent_of_leaf) != 0, count == 50);

        ese_file file;
        libesedb_error_t *error = nullptr;
        QVERIFY(file.open(path, error) == ese_file::opening::done);
        QVERIFY(read_from(ese_root_view(file.bytes().get()), options.page_size, roots.first()) !=
                content.mid(roots.first(), options.page_size));
        const ese_table_handle table = table_of(file.handle(), "Records");
        QCOMPARE(record_count(table), count);
        for (int i = 0; i < count; ++i) {
            QCOMPARE(raw_value(record_at(table, i), 0), record_bytes(i, options.page_size));
        }
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
    const auto unchanged = [](QByteArray &, int) {};
    const auto longer = [](QByteArray &content, int) { content += QByteArray(99, 'x'); };
    QTest::newRow("sound") << ese_file_options() << change(unchanged) << false << true;
    QTest::newRow("part of a page behind") << ese_file_options() << change(longer) << false << true;

    const auto flipped = [](const char *name, const ese_file_options &options, int offset) {
        QTest::newRow(name) << options << change([offset](QByteArray &content, int root) {
            content[root + offset] = content[root + offset] ^ 1;
        }) << true << true;
    };
    flipped("wrong sum", {}, 0);
    flipped("wrong correction", {}, 4);
    flipped("wrong content", {}, 60);
    flipped("wrong old sum", {4096, 0x09}, 0);
    flipped("wrong content, old sum", {4096, 0x09}, 60);
    flipped("wrong sum of a quarter", {16384, 0x11}, 48);
    flipped("wrong last quarter", {16384, 0x11}, 16380);

    constexpr int page_size_offset = 236;
    for (const quint32 size : {0U, 1024U, 8191U, 65536U, 0xffffffffU}) {
        QTest::addRow("page size %u", size) << ese_file_options() << change([size](QByteArray &content, int) {
            qToLittleEndian(size, content.data() + page_size_offset);
        }) << true << false;
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
    write_records(written, {page_size}, count, true);
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
