// Reading a table window by window: records, order and number are those of the whole table.
#include "evidence/files.h"
#include "tests/windows/ese_leaf_records.h"
#include "windows/ese_table_records.h"
#include "windows/ese_tree_guard.h"

#include <QTemporaryDir>
#include <QTest>
#include <QtEndian>

using evidence::ese_file_options;

namespace {

const QByteArray table_name = QByteArrayLiteral("Records");

bool is_branch_below_root(const QByteArray &content, int page)
{
    constexpr int flags_offset = 36;
    constexpr quint32 root_leaf_and_kinds_of_other_trees = 0x1 | 0x2 | 0x20 | 0x40 | 0x80;
    const auto flags = qFromLittleEndian<quint32>(content.constData() + page + flags_offset);
    return flags != 0 && (flags & root_leaf_and_kinds_of_other_trees) == 0;
}

// The number of a page that an entry leads to are its last four bytes.
void lead_to(int number, QByteArray &content, int page, int page_size)
{
    constexpr int header_size = 40;
    constexpr int tag_count_offset = 34;
    const int tags = qFromLittleEndian<quint16>(content.constData() + page + tag_count_offset) & 0xfff;
    for (int tag = 1; tag < tags; ++tag) {
        const char *place = content.constData() + page + page_size - 4 * (tag + 1);
        const int end = (qFromLittleEndian<quint16>(place + 2) & 0x1fff) + (qFromLittleEndian<quint16>(place) & 0x1fff);
        qToLittleEndian(static_cast<quint32>(number), content.data() + page + header_size + end - 4);
    }
}

// Out: how many records the library finds in the window.
int records_in(const ese_file &file, const ese_root_window &window)
{
    ese_source_handle source(file.stream(), window);
    libesedb_file_t *opened = nullptr;
    libesedb_file_initialize(&opened, nullptr);
    const ese_file_handle part(opened);
    return source.open(opened, nullptr) == 1 ? record_count(table_of(opened, table_name)) : -1;
}

} // namespace

class test_ese_table_records : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void windows_make_up_the_table_data();
    void windows_make_up_the_table();
    void pages_that_are_no_tree_are_not_walked_data();
    void pages_that_are_no_tree_are_not_walked();
};

Q_DECLARE_METATYPE(ese_file_options)

void test_ese_table_records::windows_make_up_the_table_data()
{
    QTest::addColumn<ese_file_options>("options");
    QTest::addColumn<int>("record_count");
    // An entry of a branch takes 10 to 14 bytes, so a root leads to a page's size / 14 to / 10 pages at most.
    QTest::newRow("4k, old sum, root of leaves") << ese_file_options{4096, 0x09} << 50;
    QTest::newRow("4k, old sum, root of branches") << ese_file_options{4096, 0x09} << 4096 / 9;
    QTest::newRow("8k, root of branches") << ese_file_options{8192, 0x11} << 8192 / 9;
    QTest::newRow("32k, root of leaves") << ese_file_options{32768, 0x14} << 300;
}

void test_ese_table_records::windows_make_up_the_table()
{
    QFETCH(ese_file_options, options);
    QFETCH(int, record_count);
    const QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("store.vol"));
    write_records(path, options, record_count);
    ese_file file;
    libesedb_error_t *error = nullptr;
    QVERIFY(file.open(path, error) == ese_file::opening::done);
    const quint32 root = file.stream().catalog().roots(table_name).records;
    const auto shape = file.stream().view().shape_of(root);
    QVERIFY(shape && shape->child_count > 1);
    int sum = 0;
    for (int first = 0; first < shape->child_count; first += shape->child_count / 2) {
        const int count = records_in(file, {root, first, shape->child_count / 2});
        QVERIFY(count > 0 && count < record_count);
        sum += count;
    }
    QCOMPARE(sum, record_count);

    const ese_table_handle table = table_of(file.handle(), table_name);
    for (const ese_table_records::window_plan plan : {ese_table_records::window_plan{3, 10}, {64, 1}, {64, 256}}) {
        ese_table_records records(file, table_name, table.get(), plan);
        int count = 0;
        QCOMPARE(records.count(&count, nullptr), 1);
        QCOMPARE(count, record_count);
        for (const bool is_backwards : {false, true}) {
            for (int step = 0; step < count; ++step) {
                const int index = is_backwards ? count - 1 - step : step;
                libesedb_record_t *fetched = nullptr;
                QCOMPARE(records.get(index, &fetched, nullptr), 1);
                const ese_record_handle record(fetched);
                QVERIFY2(raw_value(record, 0) == record_bytes(index, options.page_size),
                         qPrintable(QString::number(index)));
            }
        }
    }
}

void test_ese_table_records::pages_that_are_no_tree_are_not_walked_data()
{
    QTest::addColumn<int>("page_led_to"); // 0: that which leads
    QTest::addColumn<QByteArray>("catalog_name");
    QTest::newRow("a circle: the library would follow it until its stack ends") << 0 << QByteArray("MSysObjects");
    QTest::newRow("a circle, and a catalog that does not name itself") << 0 << QByteArray("MSysNothing");
    QTest::newRow("the catalog: the library would take it for records of the table") << 4 << QByteArray("MSysObjects");
}

void test_ese_table_records::pages_that_are_no_tree_are_not_walked()
{
    QFETCH(int, page_led_to);
    QFETCH(QByteArray, catalog_name);
    constexpr ese_file_options options{4096, 0x11};
    const QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("store.vol"));
    write_records(path, options, options.page_size / 9);
    QByteArray content = content_of(path).replace("MSysObjects", catalog_name);
    int changed = 0;
    for (int page = 2 * options.page_size; page < content.size(); page += options.page_size) {
        if (is_branch_below_root(content, page)) {
            const int own_number = page / options.page_size - 1;
            lead_to(page_led_to == 0 ? own_number : page_led_to, content, page, options.page_size);
            ++changed;
        }
    }
    QVERIFY(changed >= 2);
    const QString changed_path = folder.filePath(QStringLiteral("changed.vol"));
    evidence::write_file(changed_path, content);

    ese_file file;
    libesedb_error_t *error = nullptr;
    QVERIFY(file.open(changed_path, error) == ese_file::opening::done);
    QVERIFY(!may_walk_tree(file, file.stream().catalog().roots(table_name).records, ese_page::content_kind::records));
    const ese_table_handle table = table_of(file.handle(), table_name);
    ese_table_records records(file, table_name, table.get());
    int count = 0;
    QCOMPARE(records.count(&count, nullptr), -1);
    QCOMPARE(count, 0);
}

QTEST_GUILESS_MAIN(test_ese_table_records)
#include "test_ese_table_records.moc"
