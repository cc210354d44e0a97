// The header values of a mail file: which lines count, what of them is the value, and what bounds the search.
#include "windows/eml_header_scan.h"

#include <QTest>

namespace {

QString line_of(const eml_header_values &values)
{
    const auto shown = [](const QString &value) { return value.isNull() ? QStringLiteral("-") : value; };
    return QStringList{shown(values.from), shown(values.to), shown(values.subject), shown(values.importance),
                       shown(values.date)}
        .join(QLatin1Char('|'));
}

QString scanned(const QByteArray &file, int piece_size)
{
    const std::atomic<bool> no_cancel{false};
    eml_header_scan scan(no_cancel);
    for (int at = 0; at < file.size(); at += piece_size) {
        scan.take(file.constData() + at, qMin(piece_size, file.size() - at));
    }
    scan.finish();
    return line_of(scan.values());
}

} // namespace

class test_eml : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void takes_values_from_lines_data();
    void takes_values_from_lines();
    void ends_when_cancelled();
    void bounds_a_line();
};

void test_eml::takes_values_from_lines_data()
{
    QTest::addColumn<QByteArray>("file");
    QTest::addColumn<QString>("values"); // from|to|subject|importance|date, "-" for none
    const auto row = [](const char *name, const QByteArray &file, const char *values) {
        QTest::newRow(name) << file << QString::fromUtf8(values);
    };
    row("a whole header",
        "From: Anna <anna@example.org>\r\nTo: <ben@example.org>\r\nSubject: Offer\r\nImportance: high\r\n"
        "Date: Mon, 2 Mar 2015 10:20:30 +0100\r\n\r\nbody\r\n",
        " Anna anna@example.org\r\n| ben@example.org\r\n| Offer\r\n| high\r\n| Mon, 2 Mar 2015 10:20:30 +0100\r\n");
    row("other case is another name", "FROM: a\nto: b\nsubject: c\n", "-|-|-|-|-");
    row("the last line wins, in the body as well", "From: a\nReply-To: b\n\n> From: c\n", " c\n| b\n|-|-|-");
    row("two names in a line", "From: a To: b\n", " b\n| b\n|-|-|-");
    row("encoded words", "From: =?utf-8?Q?Anna?= <a@b>\nSubject: =?utf-8?Q?Gr=C3=BC=C3=9Fe?=\n",
        " a@b\n|-|Gr=C3=BC=C3=9Fe\n|-|-");
    row("behind the last colon", "Subject: Re: offer\nDate: a Date: 10:20\n", "-|-| offer\n|-| 10:20\n");
    row("no line end at the end, no value", "Importance: low\nTo:", "-||-| low\n|-");
    row("up to the first zero byte", QByteArray("From: a\0b: c\nTo\0: d\nTo: e\n", 26), " a| e\n|-|-|-");
    row("UTF-8 and what is none", "From: Gr\xC3\xBC\xC3\x9F \xFC\n", " Grüß \xEF\xBF\xBD\n|-|-|-|-");
}

void test_eml::takes_values_from_lines()
{
    QFETCH(QByteArray, file);
    QFETCH(QString, values);
    for (const int piece_size : {1, 3, 1 << 16}) {
        QCOMPARE(scanned(file, piece_size), values);
    }
}

void test_eml::ends_when_cancelled()
{
    std::atomic<bool> cancel{false};
    eml_header_scan scan(cancel);
    QVERIFY(scan.take("From: a\nTo:", 11));
    cancel = true;
    QVERIFY(!scan.take(" b\nTo: c\n", 9));
    QCOMPARE(line_of(scan.values()), QStringLiteral(" a\n|-|-|-|-"));
}

// The end of a longer line is left out, which is told: it may hold a header name.
void test_eml::bounds_a_line()
{
    const std::atomic<bool> no_cancel{false};
    const QByteArray filling(1 << 20, 'x');
    eml_header_scan scan(no_cancel);
    const auto take_long_line = [&scan, &filling](const QByteArray &begin) {
        scan.take(begin.constData(), begin.size());
        for (int i = 0; i < 5; ++i) {
            scan.take(filling.constData(), filling.size());
        }
        scan.take("y\n", 2);
    };
    QVERIFY(!scan.has_cut_line());
    take_long_line("no header");
    QVERIFY(scan.has_cut_line());
    take_long_line("Subject:");
    scan.take("To: b\n", 6);
    scan.finish();
    QCOMPARE(scan.values().subject.size(), eml_header_scan::longest_line - 8);
    QVERIFY(!scan.values().subject.contains(QLatin1Char('y')));
    QCOMPARE(scan.values().to, QStringLiteral(" b\n"));
}

QTEST_GUILESS_MAIN(test_eml)
#include "test_eml.moc"
