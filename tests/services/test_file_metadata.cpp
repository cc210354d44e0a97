// Usage dates and printed descriptions of a file's metadata, kept in its extended attributes or in the AppleDouble file
// beside it.
#include "evidence/property_list_file.h"
#include "services/file_metadata.h"
#include "tests/services/service_test.h"

#include <QTemporaryDir>
#include <QtEndian>

#include <sys/xattr.h>

namespace {

using attribute_values = QVector<QPair<QByteArray, QByteArray>>;

QByteArray big_endian(quint32 number)
{
    QByteArray bytes(4, '\0');
    qToBigEndian(number, bytes.data());
    return bytes;
}

// An AppleDouble file as macOS writes it: header; entries for the Finder information and the resource fork; 32 bytes of
// Finder information and two of padding; the attribute header; the attribute entries, each filled up to a multiple of
// four; the values.
QByteArray apple_double(const attribute_values &attributes)
{
    constexpr int attributes_at = 26 + 2 * 12 + 32 + 2;
    const auto padded = [](const QByteArray &entry) { return entry + QByteArray(-entry.size() & 3, '\0'); };
    int data_at = attributes_at + 36;
    for (const auto &attribute : attributes) {
        data_at += padded(QByteArray(11, '\0') + attribute.first + '\0').size();
    }
    QByteArray entries;
    QByteArray data;
    for (const auto &[name, value] : attributes) {
        entries += padded(big_endian(data_at + data.size()) + big_endian(value.size()) + QByteArray(2, '\0') +
                          static_cast<char>(name.size() + 1) + name + '\0');
        data += value;
    }
    const int end = data_at + data.size();
    return big_endian(0x00051607) + big_endian(0x00020000) + "Mac OS X        " + QByteArray("\0\2", 2) +
           big_endian(9) + big_endian(50) + big_endian(end - 50) + big_endian(2) + big_endian(end) + big_endian(0) +
           QByteArray(32 + 2, '\0') + "ATTR" + big_endian(1) + big_endian(end) + big_endian(data_at) +
           big_endian(data.size()) + QByteArray(15, '\0') + static_cast<char>(attributes.size()) + entries + data;
}

QByteArray value_of(const QVariant &value)
{
    return evidence::property_list_bytes(value, evidence::property_list_form::binary);
}

const QDateTime before_1970 = QDateTime::fromSecsSinceEpoch(-1, Qt::UTC);
const QDateTime march_2015 = QDateTime::fromMSecsSinceEpoch(1425205230750, Qt::UTC); // 10:20:30.75
const QDateTime march_2016 = QDateTime::fromSecsSinceEpoch(1456827630, Qt::UTC);

} // namespace

class test_file_metadata : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { set_time_zone("America/St_Johns"); } // no value depends on the machine's time zone
    void cleanup() { service::set_cancel_extraction(false); }

    void init()
    {
        folder = std::make_unique<QTemporaryDir>();
        file = folder->filePath("Brief"_s);
        evidence::write_file(file, "content");
    }

    void used_dates_data()
    {
        QTest::addColumn<bool>("is_double");
        QTest::addColumn<QByteArray>("last_used"); // none: not stored
        QTest::addColumn<QByteArray>("used");
        QTest::addColumn<QString>("expected_last_used");
        QTest::addColumn<QString>("expected_used"); // one behind the other
        const auto row = [](const char *name, const QByteArray &last_used, const QByteArray &used, const char *last,
                            const char *all) {
            QTest::addRow("%s, extended attributes", name)
                << false << last_used << used << QString::fromLatin1(last) << QString::fromLatin1(all);
            QTest::addRow("%s, AppleDouble", name)
                << true << last_used << used << QString::fromLatin1(last) << QString::fromLatin1(all);
        };
        row("stored order stays", value_of(march_2015), value_of(QVariantList{march_2016, march_2015}), "1425205230",
            "1456827630 1425205230");
        row("one date", {}, value_of(QVariantList{march_2015}), "", "1425205230");
        row("last use alone", value_of(march_2015), {}, "1425205230", "");
        row("before 1970", value_of(before_1970), value_of(QVariantList{before_1970, march_2015}), "0", "0 1425205230");
        row("damaged values", "bplist00", value_of(QVariantList{march_2015}).chopped(1), "", "");
    }

    void used_dates()
    {
        QFETCH(bool, is_double);
        QFETCH(QByteArray, last_used);
        QFETCH(QByteArray, used);
        QFETCH(QString, expected_used);
        attribute_values attributes{{"com.apple.quarantine", "0081;00000000;Mail;"}};
        if (!last_used.isNull()) {
            attributes.append({"com.apple.metadata:kMDItemLastUsedDate", last_used});
        }
        if (!used.isNull()) {
            attributes.append({"com.apple.metadata:kMDItemUsedDates", used});
        }
        if (is_double) {
            write_double(apple_double(attributes));
        } else {
            for (const auto &[name, value] : attributes) {
                if (::setxattr(file.toUtf8().constData(), ("user." + name).constData(), value.constData(),
                               static_cast<size_t>(value.size()), 0) != 0) {
                    QSKIP("The file system of the temporary folder keeps no extended attributes of users.");
                }
            }
        }
        const struct_used_dates dates = service::extract_used_date(file);
        const QStringList expected = expected_used.split(QLatin1Char(' '), Qt::SkipEmptyParts);
        QTEST(dates.last_used_date, "expected_last_used");
        QCOMPARE(dates.used_dates, expected);
        QCOMPARE(dates.first_date, expected.value(0));
        QCOMPARE(dates.last_date, expected.value(expected.size() - 1));

        service::set_cancel_extraction(true);
        const struct_used_dates cancelled = service::extract_used_date(file);
        QTEST(cancelled.last_used_date, "expected_last_used");
        QVERIFY(cancelled.used_dates.isEmpty() && cancelled.first_date.isEmpty() && cancelled.last_date.isEmpty());
    }

    void no_metadata()
    {
        make_pipe(folder->filePath("._Brief"_s)); // in place of the attributes, and not waited for
        // The attributes of a file that is gone tell nothing of it.
        evidence::write_file(folder->filePath("._gone"_s),
                             apple_double({{"com.apple.metadata:kMDItemLastUsedDate", value_of(march_2015)}}));
        for (const QString &path : {file, folder->filePath("gone"_s), QString()}) {
            const struct_used_dates dates = service::extract_used_date(path);
            QVERIFY(dates.last_used_date.isEmpty() && dates.used_dates.isEmpty() && dates.first_date.isEmpty());
        }
        QVERIFY(!file_metadata::item_at(folder->filePath("gone"_s)));
        QVERIFY(file_metadata::item_at(file)->attribute_description("kMDItemUsedDates"_s).isNull());
    }

    void hostile_apple_double()
    {
        const QByteArray good =
            apple_double({{"com.apple.metadata:kMDItemUsedDates", value_of(QVariantList{march_2015})},
                          {"com.apple.metadata:kMDItemLastUsedDate", value_of(march_2016)}}); // ends the file
        write_double(good);
        QCOMPARE(service::extract_used_date(file).last_used_date, "1456827630"_s);
        for (int at = 0; at < good.size(); ++at) {
            write_double(good.left(at));
            QCOMPARE(service::extract_used_date(file).last_used_date, QString());
            write_double(QByteArray(good).replace(at, 4, "\xff\xff\xff\xff")); // offsets and counts beyond the end
            service::extract_used_date(file);
        }
    }

    void description_data()
    {
        QTest::addColumn<QVariant>("value");
        QTest::addColumn<QString>("expected");
        const auto row = [](const char *name, const QVariant &value, const char *expected) {
            QTest::newRow(name) << value << QString::fromUtf8(expected);
        };
        row("text", "Größe \"1, 2\""_s, "<CFString 0x0 [0x0]>{contents = \"Größe \"1, 2\"\"}");
        row("integer", 5, "<CFNumber 0x0 [0x0]>{value = +5, type = kCFNumberSInt64Type}");
        row("negative", -5, "<CFNumber 0x0 [0x0]>{value = -5, type = kCFNumberSInt64Type}");
        row("real", 1.5, "<CFNumber 0x0 [0x0]>{value = +1.50000000000000000000, type = kCFNumberFloat64Type}");
        row("negative real", -0.25,
            "<CFNumber 0x0 [0x0]>{value = -0.25000000000000000000, type = kCFNumberFloat64Type}");
        row("true", true, "<CFBoolean 0x0 [0x0]>{value = true}");
        row("false", false, "<CFBoolean 0x0 [0x0]>{value = false}");
        row("date", march_2015, "2015-03-01 10:20:30 +0000");
        row("texts", QStringList{"http://a.example/ü"_s, "b, c"_s}, "(\n    \"http://a.example/ü\",\n    \"b, c\"\n)");
        row("dates", QVariantList{march_2015, before_1970},
            "(\n    \"2015-03-01 10:20:30 +0000\",\n    \"1969-12-31 23:59:59 +0000\"\n)");
        row("data", QByteArray("data"), "");
        row("dictionary", evidence::property_list_dictionary{{"key", 1}}, "");
    }

    void description()
    {
        QFETCH(QVariant, value);
        write_double(apple_double({{"com.apple.metadata:kMDItemWhereFroms", value_of(value)}}));
        QTEST(file_metadata::item_at(file)->attribute_description("kMDItemWhereFroms"_s), "expected");
    }

private:
    void write_double(const QByteArray &content) { evidence::write_file(folder->filePath("._Brief"_s), content); }

    std::unique_ptr<QTemporaryDir> folder;
    QString file;
};

QTEST_GUILESS_MAIN(test_file_metadata)
#include "test_file_metadata.moc"
