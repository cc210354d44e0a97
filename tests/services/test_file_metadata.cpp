// Usage dates and printed descriptions of a file's metadata, kept in its extended attributes or in the AppleDouble file
// beside it.
#include "evidence/file_metadata_writer.h"
#include "services/file_metadata.h"
#include "tests/services/service_test.h"

#include <QTemporaryDir>

#include <sys/xattr.h>

using dictionary = evidence::property_list_dictionary;
using evidence::metadata_place;

namespace {

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
        double_file = folder->filePath("._Brief"_s);
        evidence::write_file(file, "content");
    }

    void used_dates_data()
    {
        QTest::addColumn<dictionary>("attributes");
        QTest::addColumn<QString>("last_used");
        QTest::addColumn<QStringList>("used");
        const auto row = [](const char *name, const dictionary &attributes, const char *last, const char *used) {
            QTest::newRow(name) << attributes << QString::fromLatin1(last)
                                << QString::fromLatin1(used).split(QLatin1Char(' '), Qt::SkipEmptyParts);
        };
        row("stored order stays",
            {{"other", 1},
             {"kMDItemLastUsedDate", march_2015},
             {"kMDItemUsedDates", QVariantList{march_2016, march_2015}}},
            "1425205230", "1456827630 1425205230");
        row("one date", {{"other", 1}, {"kMDItemUsedDates", QVariantList{march_2015}}}, "", "1425205230");
        row("last use alone", {{"other", 1}, {"kMDItemLastUsedDate", march_2015}}, "1425205230", "");
        row("before 1970",
            {{"kMDItemLastUsedDate", before_1970}, {"kMDItemUsedDates", QVariantList{before_1970, march_2015}}}, "0",
            "0 1425205230");
    }

    void used_dates()
    {
        QFETCH(dictionary, attributes);
        QFETCH(QStringList, used);
        for (const metadata_place place : {metadata_place::apple_double, metadata_place::extended_attributes}) {
            if (place == metadata_place::extended_attributes) {
                QVERIFY(QFile::remove(double_file));
                if (!evidence::holds_extended_attributes(folder->path())) {
                    QSKIP("The file system of the temporary folder keeps no extended attributes of users.");
                }
                ::setxattr(file.toUtf8().constData(), "user.com.apple.quarantine", "0081", 4, 0);
            }
            evidence::write_file_metadata(file, attributes, place);
            if (place == metadata_place::apple_double) { // an attribute that is no metadata stands in front
                change_double("com.apple.metadata:other", "com.apple.quarantine:123");
            }
            const struct_used_dates dates = service::extract_used_date(file);
            QTEST(dates.last_used_date, "last_used");
            QCOMPARE(dates.used_dates, used);
            QCOMPARE(dates.first_date, used.value(0));
            QCOMPARE(dates.last_date, used.value(used.size() - 1));

            service::set_cancel_extraction(true);
            const struct_used_dates cancelled = service::extract_used_date(file);
            QTEST(cancelled.last_used_date, "last_used");
            QVERIFY(cancelled.used_dates.isEmpty() && cancelled.first_date.isEmpty() && cancelled.last_date.isEmpty());
            service::set_cancel_extraction(false);
        }
    }

    void no_metadata()
    {
        make_pipe(double_file); // in place of the attributes, and not waited for
        // The attributes of a file that is gone tell nothing of it.
        const QString gone = folder->filePath("gone"_s);
        evidence::write_file_metadata(gone, {{"kMDItemLastUsedDate", march_2015}}, metadata_place::apple_double);
        for (const QString &path : {file, gone, QString()}) {
            const struct_used_dates dates = service::extract_used_date(path);
            QVERIFY(dates.last_used_date.isEmpty() && dates.used_dates.isEmpty() && dates.first_date.isEmpty());
        }
        QVERIFY(!file_metadata::item_at(gone));
        QVERIFY(file_metadata::item_at(file)->attribute_description("kMDItemUsedDates"_s).isNull());
    }

    void hostile_apple_double()
    {
        const dictionary attributes{{"kMDItemUsedDates", QVariantList{march_2015}},
                                    {"kMDItemLastUsedDate", march_2016}}; // ends the file
        evidence::write_file_metadata(file, attributes, metadata_place::apple_double);
        const QByteArray good = content_of(double_file);
        QCOMPARE(service::extract_used_date(file).last_used_date, "1456827630"_s);
        change_double("bplist00", "bplist  "); // both values are damaged
        QCOMPARE(service::extract_used_date(file).last_used_date, QString());
        QCOMPARE(service::extract_used_date(file).used_dates, QStringList());
        for (int at = 0; at < good.size(); ++at) {
            evidence::write_file(double_file, good.left(at));
            QCOMPARE(service::extract_used_date(file).last_used_date, QString());
            // offsets and counts beyond the end
            evidence::write_file(double_file, QByteArray(good).replace(at, 4, "\xff\xff\xff\xff"));
            service::extract_used_date(file);
        }
    }

    void description()
    {
        const std::pair<QVariant, const char *> values[] = {
            {"Größe \"1, 2\""_s, "<CFString 0x0 [0x0]>{contents = \"Größe \"1, 2\"\"}"},
            {5, "<CFNumber 0x0 [0x0]>{value = +5, type = kCFNumberSInt64Type}"},
            {-5, "<CFNumber 0x0 [0x0]>{value = -5, type = kCFNumberSInt64Type}"},
            {1.5, "<CFNumber 0x0 [0x0]>{value = +1.50000000000000000000, type = kCFNumberFloat64Type}"},
            {-0.25, "<CFNumber 0x0 [0x0]>{value = -0.25000000000000000000, type = kCFNumberFloat64Type}"},
            {true, "<CFBoolean 0x0 [0x0]>{value = true}"},
            {false, "<CFBoolean 0x0 [0x0]>{value = false}"},
            {march_2015, "2015-03-01 10:20:30 +0000"},
            {QStringList{"http://a.example/ü"_s, "b, c"_s}, "(\n    \"http://a.example/ü\",\n    \"b, c\"\n)"},
            {QVariantList{march_2015, before_1970},
             "(\n    \"2015-03-01 10:20:30 +0000\",\n    \"1969-12-31 23:59:59 +0000\"\n)"},
            {QByteArray("data"), ""},
            {dictionary{{"key", 1}}, ""}};
        for (const auto &[value, expected] : values) {
            evidence::write_file_metadata(file, {{"kMDItemWhereFroms", value}}, metadata_place::apple_double);
            QCOMPARE(file_metadata::item_at(file)->attribute_description("kMDItemWhereFroms"_s),
                     QString::fromUtf8(expected));
        }
    }

private:
    void change_double(const char *bytes, const char *others) const
    {
        evidence::write_file(double_file, content_of(double_file).replace(bytes, others));
    }

    std::unique_ptr<QTemporaryDir> folder;
    QString file;
    QString double_file;
};

QTEST_GUILESS_MAIN(test_file_metadata)
#include "test_file_metadata.moc"
