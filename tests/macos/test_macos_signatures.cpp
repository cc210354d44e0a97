// The table signature: the signatures with the text of their files, the accounts that they belong to, and what becomes
// of lists and files that are damaged or hostile.
#include "macos/signature_text.h"
#include "tests/macos/configuration_source.h"

#include <QElapsedTimer>

using evidence::property_list_dictionary;

namespace {

const QString list_operation = text("mail_macos::xcode_extract_allsignature");
const QString map_operation = text("mail_macos::xcode_extract_updatesignature");
const std::atomic<bool> not_cancelled{false};

// The lists and files of a user's store.
class signature_source : public configuration_source
{
public:
    signature_source() : configuration_source("signature", "Signatures/AllSignatures.plist") {}

    QString folder_of(int generation) const
    {
        return tree.store_folder(text("anna"), generation) + text("/MailData/Signatures/");
    }
    QString add_file(int generation, const char *uid, const QByteArray &content) const
    {
        const QString path = folder_of(generation) + text(uid) + text(".mailsignature");
        evidence::make_folder(folder_of(generation));
        evidence::write_file(path, content);
        return path;
    }
    void write_map(int generation, const QVariant &root) const
    {
        write_list(folder_of(generation) + text("AccountsMap.plist"), root, evidence::property_list_form::xml);
    }
};

} // namespace

class test_macos_signatures : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void rows_and_their_accounts();
    void texts_of_files_data();
    void texts_of_files();
    void markup_that_takes_for_ever();
    void files_that_are_none();
    void a_signature_assigned_again_and_again();
    void elements_of_a_wrong_kind();
};

void test_macos_signatures::rows_and_their_accounts()
{
    signature_source source;
    source.write("anna", 3, json(R"([{"SignatureName": " Work ", "SignatureUniqueId": "UID-1"},
                                     {"SignatureName": "of no file", "SignatureUniqueId": "UID-2"}, "no dictionary",
                                     {"SignatureName": 5, "SignatureUniqueId": "UID-3"}])"));
    source.add_file(3, "UID-1",
                    "Content-Type: text/html\nContent-Transfer-Encoding: quoted-printable\n\n<html><head>=3D</head>"
                    "<body><div>Anna M=\n\xc3\xbcller</div><div>Tel=3D <b>12</b></div></body></html>\n");
    source.add_file(3, "UID-3",
                    "Subject: none\n\nGr\xfc\xdf"
                    "e =\nAnna\n");
    // Not in the order of the keys: the last account is that of "UID-1".
    source.write_map(
        3,
        property_list_dictionary{
            {"ZZ", json(R"({"AccountURL": "imap://anna%40example.org@mail%2", "Signatures": [" UID-1 ", "UID-2"]})")},
            {"MM", text("no dictionary")},
            {"NN", json(R"({"AccountURL": "local://", "Signatures": []})")},
            {"AA", json(R"({"AccountURL": "pop://b%C3%B6b%00rest", "Signatures": ["UID%2D1"]})")}});
    source.write("anna", 5, json(R"([{"SignatureName": "Later", "SignatureUniqueId": "UID-5"}])"));
    source.add_file(5, "UID-5", "<body>five");
    const tree_snapshot before(source.folder.path());

    const auto run = source.run();

    QCOMPARE(before.changes(), QString());
    source.compare_rows_with("signatures.txt", *run);
    QCOMPARE(run->record_signals.last(), 3);
    const QString folder = text("SOURCE/Users/anna/Library/Mail/V3/MailData/Signatures/");
    const auto file_failure = [&](const char *uid) {
        return QStringList{text("file open--------FAILED------") + folder + text(uid) + text(".mailsignature"),
                           text("Error :- No such file or directory")};
    };
    const QStringList starts = texts({"starts"});
    const QStringList ends = texts({"ends"});
    QCOMPARE(run->log_of(list_operation), starts + file_failure("UID-2") + file_failure("") + ends + starts + ends);
    QCOMPARE(run->log_of(map_operation), starts + ends);
}

void test_macos_signatures::texts_of_files_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<QString>("text");
    const QByteArray quoted = "Content-Transfer-Encoding: quoted-printable\n";
    const auto row = [](const char *name, const QByteArray &content, const char *shown) {
        QTest::newRow(name) << content << text(shown);
    };
    row("empty", "", "");
    row("soft line break", quoted + "<body>a=\nb</body>", "ab");
    row("the header behind it", "<body>a=\nb<br>" + quoted, "ab\nContent-Transfer-Encoding: quoted-printable");
    row("no such header", "<body>a=\nb</body>", "a= b");
    row("header in lower case", "content-transfer-encoding: quoted-printable\n<body>a=\nb", "a= b");
    row("soft break of CR LF stays", quoted + "<body>a=\r\nb", "a= b");
    row("encoded equals sign stays", quoted + "<body>a=3Db", "a=3Db");
    row("marker in the text", "<body>a+@@,@@+b", "ab");
    row("no body", "Subject: x\n\n<p>a</p><p>b</p>", "Subject: x \na\nb");
    row("body in capitals is none", "x<BODY>a", "x\na");
    row("zero byte ends its line", QByteArray("<body>a\0b\nc", 11), "ac");
    row("UTF-8", "<body>\xc3\xbc\xf0\x9f\x98\x80", "ü😀");
    row("Latin-1", "<body>\xfc\xc3", "üÃ");
    row("UTF-8 cut off", "<body>a\xc3", "aÃ");
    row("style sheet", "<body><style>.p{white-space:pre}</style><p class=p>a   b</p>", "a   b");
    row("a name that begins like one", "<body>a <styled>text</styled> b", "a text b");
}

void test_macos_signatures::texts_of_files()
{
    QFETCH(QByteArray, content);
    QTEST(plain_text_of_signature(content, not_cancelled)->text, "text");
}

// Each of these would take the document minutes, or have it read a file of this machine.
void test_macos_signatures::markup_that_takes_for_ever()
{
    QElapsedTimer clock;
    clock.start();
    for (const QByteArray &markup :
         {QByteArray("<table><tr><td>x").repeated(40000),
          "<table>" + QByteArray("<tr><td colspan=20480>x").repeated(2000), QByteArray("&#x41").repeated(80000) + "x",
          QByteArray("<td>").repeated(200000) + "x"}) {
        const html_text converted = plain_text_of_signature("<body><td>" + markup, not_cancelled).value();
        QVERIFY2(converted.text.contains(QLatin1Char('x')), markup.left(20).constData());
    }
    QTemporaryDir folder;
    const QString path = folder.filePath(text("sheet.css"));
    evidence::write_file(path, "p{display:none}");
    const QByteArray link = "<link rel=stylesheet href='" + path.toUtf8() + "'></link>";
    QCOMPARE(plain_text_of_signature("<body>" + link + "<p>seen</p>", not_cancelled)->text, text("seen"));
    QVERIFY2(clock.elapsed() < 20000, qPrintable(QString::number(clock.elapsed())));
}

void test_macos_signatures::files_that_are_none()
{
    signature_source source;
    source.write("anna", 4, json(R"([{"SignatureUniqueId": "huge"}, {"SignatureUniqueId": "../../../secret"},
                                     {"SignatureUniqueId": "/../../out"}, {"SignatureUniqueId": "link"},
                                     {"SignatureUniqueId": "dir"}, {"SignatureUniqueId": "good"},
                                     {"SignatureUniqueId": "zero\u0001"}])"));
    const QString huge = source.add_file(4, "huge", "<body>huge");
    QVERIFY(QFile::resize(huge, 100 << 20));
    evidence::write_file(source.folder.filePath(text("out.mailsignature")), "<body>secret");
    evidence::write_file(source.tree.store_folder(text("anna"), 4) + text("/../secret.mailsignature"), "<body>secret");
    QVERIFY(QFile::link(source.folder.filePath(text("out.mailsignature")),
                        source.folder_of(4) + text("link.mailsignature")));
    QVERIFY(QDir().mkpath(source.folder_of(4) + text("dir.mailsignature")));
    source.add_file(4, "good", "<body>good");

    const auto run = source.run();

    QCOMPARE(source.column(*run, "signature"), QStringList{text("good")});
    const QStringList lines = run->log_of(list_operation);
    QCOMPARE(lines.filter(text("file open--------FAILED------")).size(), 6);
    QCOMPARE(lines.at(2), text("Error :- File too large"));
    QCOMPARE(lines.last(), text("ends"));
}

void test_macos_signatures::a_signature_assigned_again_and_again()
{
    const signature_source source;
    source.write("anna", 9, json(R"([{"SignatureUniqueId": "S1"}])"));
    source.add_file(9, "S1", "<body>text");
    const QStringList uids(QVector<QString>(2000, text("S1")).toList());
    source.write_map(9, property_list_dictionary{{"A1", property_list_dictionary{{"Signatures", uids}}}});

    const auto run = source.run();

    const QString sources = source.column(*run, "source_file").value(0);
    QVERIFY2(sources.size() > 16384 && sources.size() < 16600, qPrintable(QString::number(sources.size())));
    QCOMPARE(source.column(*run, "related_account_id"), QStringList{text("A1")});
    QCOMPARE(run->log_of(map_operation).size(), 3);
}

void test_macos_signatures::elements_of_a_wrong_kind()
{
    const signature_source source;
    source.write("anna", 3, json("[[], 5]"));
    source.write_map(3, json(R"({"a": 1})"));

    const auto run = source.run();

    QCOMPARE(run->row_count(source.table), 0);
    QCOMPARE(run->log_of(list_operation).last(), text("ends"));
    QCOMPARE(run->log_of(map_operation), texts({"starts", "ends"}));
}

QTEST_MAIN(test_macos_signatures)
#include "test_macos_signatures.moc"
