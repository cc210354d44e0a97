// Property lists: the value model, the readers that give row texts, and lists made to harm whoever reads them.
#include "evidence/property_list_file.h"
#include "macos/mail_macos.h"
#include "services/property_list.h"
#include "tests/services/service_test.h"

#include <QTemporaryDir>
#include <QtEndian>

#include <cstring>
#include <limits>

using evidence::property_list_dictionary;
using evidence::property_list_form;

namespace {

// Binary property lists put together byte by byte: what no library writes.
namespace binary_list {

template <typename Number>
QByteArray big_endian(Number number)
{
    number = qToBigEndian(number);
    return QByteArray(reinterpret_cast<const char *>(&number), sizeof number);
}

QByteArray integer(qint64 value)
{
    return '\x13' + big_endian(value);
}

// A real, or with another marker a date: seconds since 2001.
QByteArray real(double value, char marker = '\x23')
{
    quint64 bits = 0;
    std::memcpy(&bits, &value, sizeof bits);
    return marker + big_endian(bits);
}

QByteArray date(double seconds_since_2001)
{
    return real(seconds_since_2001, '\x33');
}

// References to other objects, by their number.
QByteArray array(const QVector<quint32> &references)
{
    QByteArray bytes = '\xaf' + integer(references.size());
    for (const quint32 reference : references) {
        bytes += big_endian(reference);
    }
    return bytes;
}

// Out: a list with any trailer behind the bytes.
QByteArray with_trailer(const QByteArray &bytes, quint8 offset_size, quint8 reference_size, quint64 object_count,
                        quint64 root, quint64 table_at)
{
    return bytes + QByteArray(6, '\0') + big_endian(offset_size) + big_endian(reference_size) +
           big_endian(object_count) + big_endian(root) + big_endian(table_at);
}

// Out: a whole list; the first object is the root.
QByteArray of(const QVector<QByteArray> &objects)
{
    QByteArray bytes = "bplist00";
    QByteArray offsets;
    for (const QByteArray &object : objects) {
        offsets += big_endian(static_cast<quint64>(bytes.size()));
        bytes += object;
    }
    return with_trailer(bytes + offsets, 8, 4, static_cast<quint64>(objects.size()), 0,
                        static_cast<quint64>(bytes.size()));
}

} // namespace binary_list

using kind = property_list_value::kind;
constexpr qint64 int64_max = std::numeric_limits<qint64>::max();
constexpr qint64 int64_min = std::numeric_limits<qint64>::min();
const QDateTime march_2015 = QDateTime::fromSecsSinceEpoch(1425205230, Qt::UTC);

class prefs_readers : public mail_macos
{
public:
    prefs_readers() : mail_macos(nullptr) {}
    using mail_macos::get_prefs_nsarray_values;
    using mail_macos::get_prefs_nsnumber_values;
    using mail_macos::get_prefs_nsstring_values;
};

QByteArray xml_of(const QByteArray &element)
{
    return "<plist version=\"1.0\">" + element + "</plist>";
}

// Asks everything of a value and of all below it. Out: how many values there are.
int ask_everything(const property_list_value &value)
{
    value.text();
    value.integer_value();
    value.string_value();
    value.data();
    service::convert_nsdate_to_epoch(value, value);
    int values = 1;
    for (const property_list_value &element : value.elements()) {
        values += ask_everything(element);
    }
    for (const QString &key : value.all_keys()) {
        values += ask_everything(value.object_for_key(key));
    }
    return values;
}

} // namespace

class test_property_lists : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void cleanup() { service::set_cancel_extraction(false); }

    void kinds()
    {
        const QTemporaryDir folder;
        const QString path = folder.filePath("Einstellungen für Mail.plist"_s);
        const QVariant root = property_list_dictionary{{"zuletzt", "Größe"_s},
                                                       {"Schlüssel", 42},
                                                       {"boolean", true},
                                                       {"real", 1.0},
                                                       {"date", march_2015},
                                                       {"data", QByteArray("\0\xff", 2)},
                                                       {"array", QVariantList{"a"_s, 1, property_list_dictionary{}}}};
        for (const property_list_form form : {property_list_form::xml, property_list_form::binary}) {
            evidence::write_property_list_file(path, root, form);
            const property_list list = property_list::from_file(path);
            QString kinds;
            for (const auto &[key, value] : list.root().entries()) {
                kinds += key + (value.is_string()    ? " string "_s
                                : value.is_boolean() ? " boolean "_s
                                : value.is_real()    ? " real "_s
                                : value.is_number()  ? " number "_s
                                : value.is_date()    ? " date "_s
                                : value.is_array()   ? " array "_s
                                                     : " another "_s);
            }
            QCOMPARE(kinds, "zuletzt string Schlüssel number boolean boolean real real date date data another "
                            "array array "_s);
            QCOMPARE(list.root().object_for_key("data"_s).data(), QByteArray("\0\xff", 2));
            const property_list_value array = list.root().object_for_key("array"_s);
            QCOMPARE(array.count(), 3);
            QVERIFY(array.object_at(2).is_dictionary());
            QVERIFY(array.object_at(-1).get_kind() == kind::none && array.object_at(3).get_kind() == kind::none);
        }
    }

    void scalar_data()
    {
        QTest::addColumn<QByteArray>("content");
        QTest::addColumn<QString>("text");   // of a string, or of a number
        QTest::addColumn<qint64>("integer"); // a number cut towards zero, or a date in seconds since 1970
        const auto row = [](const char *name, const QByteArray &element, const QByteArray &object, const char *text,
                            qint64 integer) {
            if (!element.isEmpty()) {
                QTest::addRow("%s, XML", name) << xml_of(element) << QString::fromUtf8(text) << integer;
            }
            if (!object.isEmpty()) {
                QTest::addRow("%s, binary", name) << binary_list::of({object}) << QString::fromUtf8(text) << integer;
            }
        };
        using binary_list::integer, binary_list::real, binary_list::date;
        row("negative", "<integer>-5</integer>", integer(-5), "-5", -5);
        row("least", "<integer>-9223372036854775808</integer>", integer(int64_min), "-9223372036854775808", int64_min);
        row("most", "<integer>9223372036854775807</integer>", integer(int64_max), "9223372036854775807", int64_max);
        row("unsigned", "<integer>18446744073709551615</integer>", '\x14' + QByteArray(8, '\0') + QByteArray(8, '\xff'),
            "18446744073709551615", int64_max);
        row("of one byte", "<integer>0xff</integer>", "\x10\xff", "255", 255);
        row("real", "<real>-1.9</real>", real(-1.9), "-1.9", -1);
        row("real beyond integers", "<real>1e300</real>", real(1e300), "1e+300", int64_max);
        row("true", "<true/>", "\x09", "1", 1);
        row("false", "<false/>", "\x08", "0", 0);

        row("date", "<date>2015-03-01T10:20:30Z</date>", date(446898030.75), "", 1425205230);
        row("date before 2001", "<date>2000-12-31T23:59:58Z</date>", date(-1.5), "", 978307198);
        row("date before 1970", "<date>1969-12-31T23:59:58Z</date>", date(-978307201.5), "", -2);
        row("date of 1904", "<date>1904-01-01T00:00:00Z</date>", date(-3061152000), "", -2082844800);
        row("distant future", "<date>4001-01-01T00:00:00Z</date>", date(63113904000), "", 64092211200);
        row("distant past", "<date>0001-01-01T00:00:00Z</date>", date(-63113904000), "", -62135596800);

        row("references", "<string>&lt;&#228;&#x1f600;<![CDATA[<b>]]></string>", {}, "<ä😀<b>", 0);
        row("control character", "<string>a\x01z</string>", {}, "a\x01z", 0);
        row("UTF-16", {}, QByteArray("\x63\x00\xe4\xd8\x3d\xde\x00", 7), "ä😀", 0);
        row("not ASCII although it says so", {}, "\x55Gr\xf6\xdf\x65", "Größe", 0);
    }

    void scalar()
    {
        QFETCH(QByteArray, content);
        set_time_zone("America/St_Johns"); // an instant is one everywhere
        const property_list list = property_list::from_bytes(content);
        const property_list_value value = list.root();
        const qint64 seconds = service::convert_nsdate_to_epoch(value, value); // 0 for what is no date
        QTEST(value.is_number() ? value.string_value() : service::convert_cfstring_to_qstring(value), "text");
        QTEST(value.is_number() ? value.integer_value() : seconds, "integer");
    }

    void reader_data()
    {
        QTest::addColumn<QVariant>("value");       // none: the key is absent
        QTest::addColumn<QStringList>("expected"); // string, number, boolean; labelled string, number, YES or NO, array
        const auto row = [](const char *name, const QVariant &value, const char *expected) {
            QTest::newRow(name) << value << QString::fromUtf8(expected).split(QLatin1Char('|'));
        };
        row("text", "  Größe \n"_s, "Größe|||L:+:Größe|||");
        row("blanks", "   "_s, "|||L:+:|||");
        row("empty text", ""_s, "|||L:+:|||");
        row("0", 0, "|0|||L:+:0|L:+:NO|");
        row("1", 1, "|1|||L:+:1|L:+:YES|");
        row("2", 2, "|2|||L:+:2|L:+:|");
        row("-3", -3, "|-3|||L:+:-3|L:+:|");
        row("1.9", 1.9, "|1|||L:+:1|L:+:YES|");
        row("-0.5", -0.5, "|0|||L:+:0|L:+:NO|");
        row("true", true, "|1|YES||L:+:1|L:+:YES|");
        row("false", false, "|0|NO||L:+:0|L:+:NO|");
        row("list", QStringList{" a "_s, "ü;b"_s}, "||||||L:+:a;ü;b");
        row("list with empty texts", QStringList{""_s, "a"_s, " "_s}, "||||||L:+:;a;");
        row("list of one empty text", QStringList{""_s}, "||||||L:+:");
        row("empty list", QVariantList(), "||||||L:+:");
        row("dictionary", property_list_dictionary{{"key", 1}}, "||||||");
        row("date", march_2015, "||||||");
        row("absent", QVariant(), "||||||");
    }

    void reader()
    {
        QFETCH(QVariant, value);
        QFETCH(QStringList, expected);
        const QString key = "Schlüssel"_s;
        const QString label = "L"_s;
        property_list_dictionary dictionary{{"other", 1}};
        if (value.isValid()) {
            dictionary.append({key, value});
        }
        for (const property_list_form form : {property_list_form::xml, property_list_form::binary}) {
            const property_list list = property_list::from_bytes(evidence::property_list_bytes(dictionary, form));
            const property_list_value root = list.root();
            const QStringList read{service::get_nsstring_values(key, root),
                                   service::get_nsnumber_values(key, root),
                                   service::get_nsnumber_values_yes_no(key, root),
                                   service::get_nsstring_key_and_values(key, root, label),
                                   service::get_nsnumber_key_and_values(key, root, label),
                                   service::get_nsnumber_key_and_value_yes_no(key, root, label),
                                   service::get_nsarray_key_and_values(key, root, label)};
            QCOMPARE(read, expected);
            const prefs_readers prefs;
            QCOMPARE(prefs.get_prefs_nsstring_values(key, root, label), expected.at(3));
            QCOMPARE(prefs.get_prefs_nsnumber_values(key, root, label), expected.at(5));
            QCOMPARE(prefs.get_prefs_nsarray_values(key, root, label), expected.at(6));
        }
    }

    // Each family has a flag of its own, asked at each element: an empty list asks none.
    void cancelled_readers()
    {
        const property_list list = property_list::from_bytes(
            xml_of("<dict><key>one</key><array><string>a</string></array><key>none</key><array></array></dict>"));
        prefs_readers prefs;
        service::set_cancel_extraction(true);
        QCOMPARE(service::get_nsarray_key_and_values("one"_s, list.root(), "L"_s), QString());
        QCOMPARE(service::get_nsarray_key_and_values("none"_s, list.root(), "L"_s), "L:+:"_s);
        QCOMPARE(prefs.get_prefs_nsarray_values("one"_s, list.root(), "L"_s), "L:+:a"_s);
        service::set_cancel_extraction(false);
        prefs.macos_cancel_extraction();
        QCOMPARE(prefs.get_prefs_nsarray_values("one"_s, list.root(), "L"_s), QString());
        QCOMPARE(prefs.get_prefs_nsarray_values("none"_s, list.root(), "L"_s), "L:+:"_s);
    }

    void hostile_data()
    {
        QTest::addColumn<QByteArray>("content");
        const auto row = [](const char *name, const QByteArray &content) { QTest::newRow(name) << content; };
        using namespace binary_list;
        constexpr quint32 deep = 100000;
        QVector<QByteArray> nested;
        QVector<QByteArray> doubling;
        for (quint32 i = 1; i <= deep; ++i) {
            nested.append(array({i}));
            doubling.append(i <= 60 ? array({i, i}) : integer(1));
        }
        const QByteArray arrays = QByteArray("<array>").repeated(deep) + QByteArray("</array>").repeated(deep);
        row("nested deep, XML", xml_of(arrays));
        row("nested deep, XML never closed", xml_of(QByteArray("<dict><key>k</key>").repeated(deep)));
        row("nested deep, binary", of(nested << integer(1)));
        row("unfolding without end", of(doubling));
        row("circle of one", of({array({0})}));
        row("circle of three", of({array({1}), array({2}), array({0})}));
        row("circle in a dictionary", of({QByteArray("\xd1\0\0\0\1\0\0\0\0", 9), "\x51k"}));
        row("key with a zero", of({QByteArray("\xd1\0\0\0\1\0\0\0\1", 9), QByteArray("\x62\0k\0\0", 5)}));
        row("definitions of its own", "<!DOCTYPE plist [<!ENTITY a \"aaaa\"><!ENTITY b \"&a;&a;&a;&a;\">]>"
                                      "<plist><string>&b;</string></plist>");
        row("nested where another encoding sees a comment",
            "<?xml version=\"1.0\" encoding=\"HZ-GB-2312\"?><plist><!--~{--->" + arrays + "<!--~}--></plist>");
        QByteArray attributes;
        for (quint32 i = 0; i < deep; ++i) {
            attributes += " a" + QByteArray::number(i) + "=\"\"";
        }
        row("attributes without end", "<plist" + attributes + "><true/></plist>");
        row("entities without end", xml_of("<string>" + QByteArray("&amp;").repeated(10 * deep) + "</string>"));
        row("reference to no object", of({array({1, 7}), integer(1)}));
        row("array longer than the file", of({'\xaf' + integer(int64_max)}));
        row("dictionary of no sensible length", of({'\xdf' + integer(int64_min)}));
        row("text longer than the file", of({'\x5f' + integer(1000)}));
        row("length that is no integer", of({QByteArray("\x5f\x54quit")}));
        const QByteArray body = "bplist00\x09" + QByteArray(8, '\x08');
        row("object behind the end", with_trailer(body, 8, 4, 1, 0, 9)); // its offset is 0x0808080808080808
        row("root that is no object", with_trailer(body, 1, 1, 1, 1, 9));
        row("more objects than bytes", with_trailer(body, 1, 1, ~quint64(0), 0, 9));
        row("offsets behind the end", with_trailer(body, 1, 1, 1, 0, ~quint64(0)));
        row("offsets of no bytes", with_trailer(body, 0, 1, 1, 0, 9));
        row("references of too many bytes", with_trailer(body, 1, 200, 1, 0, 9));
        row("header alone", "bplist00");
        row("null bytes", QByteArray(4096, '\0'));
    }

    void hostile()
    {
        QFETCH(QByteArray, content);
        const property_list list = property_list::from_bytes(content);
        QVERIFY(list.is_null());
        QCOMPARE(ask_everything(list.root()), 1); // every question has an answer
        QVERIFY(list.root().object_for_key("key"_s).object_at(0).get_kind() == kind::none);
    }

    // Cut off at every length, and each byte changed: read or refused, but never the end of the process.
    void damaged()
    {
        const QVariant root = property_list_dictionary{
            {"list", QVariantList{"Größe"_s, -1, 1.5, true, QByteArray("data")}}, {"date", march_2015}};
        for (const property_list_form form : {property_list_form::xml, property_list_form::binary}) {
            const QByteArray good = evidence::property_list_bytes(root, form);
            QCOMPARE(ask_everything(property_list::from_bytes(good).root()), 8);
            const int end = form == property_list_form::xml ? good.lastIndexOf('>') : good.size() - 1;
            for (int length = 0; length <= end; ++length) {
                QVERIFY(property_list::from_bytes(good.left(length)).is_null());
            }
            for (int at = 0; at < good.size(); ++at) {
                for (const int byte : {0x00, 0x3f, 0x7f, 0xaf, 0xff, good.at(at) ^ 1}) {
                    ask_everything(
                        property_list::from_bytes(QByteArray(good).replace(at, 1, QByteArray(1, byte))).root());
                }
            }
        }
        for (const double seconds : {qQNaN(), qInf(), -qInf(), 1e300, -1e300, 9.3e18, -1e12}) {
            const property_list list = property_list::from_bytes(binary_list::of({binary_list::date(seconds)}));
            QCOMPARE(ask_everything(list.root()), 1);
        }
    }

    void no_list_to_read()
    {
        const QTemporaryDir folder;
        make_pipe(folder.filePath("pipe"_s));
        evidence::write_file(folder.filePath("empty"_s), QByteArray());
        evidence::write_file(folder.filePath("huge"_s), "bplist00");
        QVERIFY(QFile::resize(folder.filePath("huge"_s), (Q_INT64_C(64) << 20) + 1));
        for (const QString &name : {"pipe"_s, "."_s, "missing"_s, "empty"_s, "huge"_s}) {
            QVERIFY2(property_list::from_file(folder.filePath(name)).is_null(), qPrintable(name));
        }
    }
};

QTEST_MAIN(test_property_lists) // with the widgets that the extractors are
#include "test_property_lists.moc"
