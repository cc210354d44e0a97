// The header scanner of mail files: what it reads of single messages, and that its shortcuts change nothing.
#include "evidence/files.h"
#include "macos/emlx_header_scanner.h"
#include "services/percent_encoding.h"

#include <QByteArrayList>
#include <QElapsedTimer>
#include <QTemporaryDir>
#include <QTest>

#include <random>
#include <utility>

namespace {

std::atomic<bool> not_cancelled{false};

QString written_emlx(const QByteArray &content)
{
    static const QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("1.emlx"));
    evidence::write_file(path, content);
    return path;
}

struct_address_bcc_replyto scanned(const QString &path, int block_size)
{
    return emlx_header_scanner(open_source_file(path), not_cancelled, block_size).scan();
}

// --- The plain way: all replacements over all of the text, then line by line ----------------------------------------

QByteArray plain_address_text(int index, const QByteArrayList &lines)
{
    const QByteArrayList pieces = lines.at(index).split(',');
    QByteArray result;
    for (int i = 0; i < pieces.size(); ++i) {
        QByteArray piece = pieces.at(i);
        const QStringList parts = QString::fromLatin1(piece).split(QStringLiteral("?=\""));
        if (piece.contains("=?utf-8?") && parts.size() >= 2) {
            QString word = parts.at(0);
            for (const char *text : {"=?utf-8?B?", "Reply-To:", "To:", "BCC:", "Bcc:", "CC:", "Cc:"}) {
                word.remove(QLatin1String(text));
            }
            result += QString::fromUtf8(QByteArray::fromBase64(word.toLatin1()).constData()).toUtf8();
            piece = parts.at(1).toLatin1();
        }
        result += piece.trimmed() + (i + 1 < pieces.size() ? "," : "");
    }
    return QByteArray(result.isEmpty() ? lines.at(index) : result).replace("\"", "");
}

QString plain_field(const QByteArrayList &lines, const QByteArray &name, const QByteArray &other_name)
{
    for (int i = 0; i < lines.size(); ++i) {
        if (lines.at(i).startsWith(name) || lines.at(i).startsWith(other_name)) {
            QByteArray text = plain_address_text(i, lines);
            text.replace(name, "").replace(other_name, "").replace('<', '(').replace('>', ')');
            return QString::fromUtf8(percent_decoded(text).constData());
        }
    }
    return QString();
}

struct_address_bcc_replyto plainly_read(const QByteArray &content)
{
    const std::pair<const char *, const char *> replacements[] = {
        {"; ", ";"},    {";\n\t", ";"},       {";\r\n\t", ";"}, {";\n ", ";"},      {";\r\n ", ";"}, {", \r\n", ","},
        {",\r\n", ","}, {"=E2=80=A6", "..."}, {"=\r\n", "\n"},  {"=E2=80=99", "'"}, {"=2C", ","},
    };
    QByteArray text = content.mid(0, content.indexOf('\0'));
    for (const auto &replacement : replacements) {
        text.replace(replacement.first, replacement.second);
    }
    const QByteArrayList lines = text.split('\n');
    return {plain_field(lines, "BCC:", "Bcc:"), plain_field(lines, "Reply-To:", "Reply-to:")};
}

// A text put together at random of all that the scanner looks for, near misses and what lies between.
QByteArray random_text(std::mt19937 &random)
{
    static const QByteArrayList pieces =
        QByteArray("Bcc:|BCC:|Reply-To:|Reply-to:|\nBcc:|\nBCC: |\nReply-To: |\r\nReply-to:|" // the names
                   "Cc:|To:|bcc:|\nBCc:|\nReply|"                                             // near misses
                   "\n|\n|\r\n|\r\n|\r|,|,|, |;|; | |\t|,\r\n|, \r\n|, \r\n\r\n|;\n\t|;\r\n\t|;\n |;\r\n |"
                   "=|=\r\n|=2C|=E2=80=A6|=E2=80=99|=E2=80=|0|2|C|E|x|"
                   "\"|\"=?utf-8?B?SsO2cmc=?=\"|\"=?utf-8?Q?Anna?=\"|=?utf-8?|?=\"|%41|%c3%b6|%00|%zz|%|"
                   "anna@example.org| <ben@example.org>|J\xc3\xb6rg|\xff")
            .split('|') +
        QByteArrayList{QByteArray(150, 'y'), QByteArray(150, ' ')};
    std::uniform_int_distribution<int> count(0, 60);
    std::uniform_int_distribution<int> which(0, pieces.size() - 1);
    std::uniform_int_distribution<int> in_hundred(0, 99);
    QByteArray text = in_hundred(random) < 50 ? "123\nFrom: x" : "";
    for (int left = count(random); left > 0; --left) {
        text += pieces.at(which(random));
    }
    if (in_hundred(random) < 10) {
        text.insert(in_hundred(random) % (text.size() + 1), '\0');
    }
    return text;
}

} // namespace

class test_emlx_header_scanner : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void reads_fields_data();
    void reads_fields();
    void is_the_plain_way_made_fast();
    void reads_nothing_when_cancelled();
    void stays_small_with_lines_without_end();
};

void test_emlx_header_scanner::reads_fields_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<QString>("bcc");
    QTest::addColumn<QString>("reply_to");
    const auto row = [](const char *name, const QByteArray &content, const char *bcc, const char *reply_to) {
        QTest::newRow(name) << content << QString::fromUtf8(bcc) << QString::fromUtf8(reply_to);
    };
    row("empty file", "", "", "");
    row("without the headers", "120\nFrom: a@x\nTo: b@x\n\nText\n<?xml version=\"1.0\"?>\n", "", "");
    row("address in angle brackets", "12\nReply-To: Anna Example <anna@x.org>\n", "", " Anna Example (anna@x.org)");
    row("at the start, no line end", "Bcc: a@x", " a@x", "");
    row("comma folded with CR LF", "Bcc: a@x,\r\n b@x, \r\n\tc@x\r\nX: y\r\n", " a@x,b@x,c@x", "");
    row("comma folded with LF", "Bcc: a@x,\n b@x\n", " a@x,", "");
    row("semicolon folded", "Reply-To: a@x;\n\tb@x;\r\n c@x; d@x;\r\n\te@x;\n f@x\n", "", " a@x;b@x;c@x;d@x;e@x;f@x");
    row("blank that hides a fold", "Reply-To: a@x; \n\tb@x\n", "", " a@x;b@x");
    row("first line of each counts", "Bcc: 1\nBCC: 2\nReply-to: 3\nReply-To: 4\n", " 1", " 3");
    row("other capitals, leading blanks", "bcc: 1\nBCc: 2\n Bcc: 3\nREPLY-TO: 4\n\tReply-To: 5\n", "", "");
    row("in the body", "From: a@x\n\nBody\nBcc: b@x\n\n<plist>\nReply-To: c@x\n</plist>", " b@x", " c@x");
    row("behind a zero byte", QByteArray("Bcc: a@x\nX: ") + '\0' + "\nReply-To: b@x\n", " a@x", "");
    row("cut by a zero byte", QByteArray("Bcc: a@x") + '\0' + "b\nReply-To: b@x\n", " a@x", "");
    row("line joined away", "To: a@x,\r\nBcc: b@x\r\n", "", "");
    row("line joined away twice", "To: a@x, \r\n\r\nBcc: b@x\r\n", "", "");
    row("line kept by a second CR LF", "To: a@x,\r\n\r\nBcc: b@x\r\n", " b@x", "");
    row("line behind an escaped comma", "To: a@x=2C\r\nBcc: b@x\r\n", " b@x", "");
    row("soft break begins and ends a line", "x=\r\nBcc: b@x=\r\nc\r\n", " b@x", "");
    row("escapes of quoted-printable", "Bcc: a=2Cb =E2=80=A6 d=E2=80=99s =20\n", " a,b ... d's =20", "");
    row("quoted word of Base64", "Reply-To: \"=?utf-8?B?SsO2cmc=?=\" <j@x>, \"=?utf-8?B?QW5uYQ==?=\" <a@x>\n", "",
        "J\xc3\xb6rg(j@x),Anna(a@x)");
    row("word in capitals", "Bcc: \"=?UTF-8?B?QQ==?=\" <a@x>\n", " =?UTF-8?B?QQ==?= (a@x)", "");
    row("word without quotes", "Bcc: =?utf-8?B?QQ==?= <a@x>\n", " =?utf-8?B?QQ==?= (a@x)", "");
    row("zero byte in a word", "Bcc: \"=?utf-8?B?QQBC?=\" <a@x>\n", "A(a@x)", "");
    row("UTF-8 as it is", "Reply-To: J\xc3\xb6rg \xc3\xa0 <j@x>\n", "", " J\xc3\xb6rg \xc3\xa0 (j@x)");
    row("percent escapes", "Reply-To: j%C3%b6rg%40x 100% <%zz>\n", "", " j\xc3\xb6rg@x 100% (%zz)");
    row("percent escape of zero", "Bcc: a%00b\nReply-To: %00\n", " a", " ");
    row("quoted comma", "Bcc: \"B, A\" <a@x>\r\n", " B,A (a@x)", "");
    row("names within the line", "Bcc: BCC:a Bcc:b\nReply-To: Reply-to:c Bcc:d\n", " a b", " c Bcc:d");
    row("nothing behind the name", "Bcc:\r\nReply-To:\n", "", "");
}

void test_emlx_header_scanner::reads_fields()
{
    QFETCH(QByteArray, content);
    QFETCH(QString, bcc);
    QFETCH(QString, reply_to);
    const QString path = written_emlx(content);
    for (const int block_size : {1, 1 << 16}) {
        const struct_address_bcc_replyto addresses = scanned(path, block_size);
        QCOMPARE(addresses.bcc, bcc);
        QCOMPARE(addresses.reply_to, reply_to);
    }
}

void test_emlx_header_scanner::is_the_plain_way_made_fast()
{
    std::mt19937 random(20150301);
    int with_both = 0;
    for (int i = 0; i < 6000; ++i) {
        const QByteArray content = random_text(random);
        const struct_address_bcc_replyto expected = plainly_read(content);
        with_both += !expected.bcc.isEmpty() && !expected.reply_to.isEmpty() ? 1 : 0;
        const QString path = written_emlx(content);
        for (const int block_size : {1 + i % 40, 1 << 16}) {
            const struct_address_bcc_replyto addresses = scanned(path, block_size);
            QVERIFY2(addresses.bcc == expected.bcc && addresses.reply_to == expected.reply_to,
                     content.toPercentEncoding("\n ,;:=").constData());
        }
    }
    QVERIFY(with_both > 1000);
}

void test_emlx_header_scanner::reads_nothing_when_cancelled()
{
    const QString path = written_emlx("Bcc: a@x\n");
    const std::atomic<bool> cancelled{true};
    QVERIFY(emlx_header_scanner(open_source_file(path), cancelled).scan().bcc.isNull());
    QVERIFY(get_to_field("Bcc: a@x", cancelled).isEmpty());
}

// Neither a line that never ends nor an address that never ends is read whole.
void test_emlx_header_scanner::stays_small_with_lines_without_end()
{
    const file_descriptor file = open_source_file(
        written_emlx("Bcc: a@x\n" + QByteArray(20 << 20, '0') + "\nReply-To:" + QByteArray(20 << 20, ',')));
    emlx_header_scanner headers(file, not_cancelled);
    QElapsedTimer timer;
    timer.start();
    const struct_address_bcc_replyto addresses = headers.scan();
    QVERIFY(timer.elapsed() < 20000);
    QCOMPARE(addresses.bcc, QStringLiteral(" a@x"));
    QVERIFY(headers.has_cut_line());
    QVERIFY(addresses.reply_to.size() < 20 << 20);
    QVERIFY(addresses.reply_to.startsWith(QLatin1String(",,,")));
}

QTEST_GUILESS_MAIN(test_emlx_header_scanner)
#include "test_emlx_header_scanner.moc"
