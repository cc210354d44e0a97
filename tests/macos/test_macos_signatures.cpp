// The table signature: the signatures with the text of their files, the accounts that they belong to, and what becomes
// of lists and files that are damaged or hostile.
#include "macos/signature_text.h"
#include "tests/macos/configuration_source.h"
#include "tests/support/tree_snapshot.h"

#include <QElapsedTimer>

using evidence::property_list_dictionary;

namespace {

const QString list_operation = QStringLiteral("mail_macos::xcode_extract_allsignature");
const QString map_operation = QStringLiteral("mail_macos::xcode_extract_updatesignature");
const std::atomic<bool> not_cancelled{false};

property_list_dictionary signature(const QString &name, const QVariant &uid)
{
    return {{"SignatureName", name}, {"SignatureUniqueId", uid}};
}

property_list_dictionary account(const QString &url, const QVariant &signatures)
{
    return {{"AccountURL", url}, {"Signatures", signatures}};
}

// The lists and files of a user's store.
class signature_source : public configuration_source
{
public:
    signature_source() : configuration_source("signature", "Signatures/AllSignatures.plist") {}

    QString folder_of(int generation) const
    {
        return tree.store_folder(QStringLiteral("anna"), generation) + QLatin1String("/MailData/Signatures/");
    }
    QString add_file(int generation, const char *uid, const QByteArray &content) const
    {
        const QString path = folder_of(generation) + QLatin1String(uid) + QLatin1String(".mailsignature");
        evidence::make_folder(folder_of(generation));
        evidence::write_file(path, content);
        return path;
    }
    void write_map(int generation, const QVariant &root) const
    {
        evidence::write_property_list_file(folder_of(generation) + QLatin1String("AccountsMap.plist"), root,
                                           evidence::property_list_form::xml);
    }
};

} // namespace

class test_macos_signatures : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void rows_and_their_accounts();
    void text_data();
    void text();
    void markup_that_takes_for_ever();
    void files_that_are_none();
    void a_signature_assigned_again_and_again();
    void wrong_lists();
    void failures_of_the_result_database();
};

void test_macos_signatures::rows_and_their_accounts()
{
    signature_source source;
    source.write(
        "anna", 3,
        QVariantList{signature(QStringLiteral(" Work "), QStringLiteral("UID-1")),
                     signature(QStringLiteral("of no file"), QStringLiteral("UID-2")), QStringLiteral("no dictionary"),
                     property_list_dictionary{{"SignatureName", 5}, {"SignatureUniqueId", QStringLiteral("UID-3")}}});
    source.add_file(3, "UID-1",
                    "Content-Type: text/html\nContent-Transfer-Encoding: quoted-printable\n\n<html><head>=3D</head>"
                    "<body><div>Anna M=\n\xc3\xbcller</div><div>Tel=3D <b>12</b></div></body></html>\n");
    source.add_file(3, "UID-3",
                    "Subject: none\n\nGr\xfc\xdf"
                    "e =\nAnna\n");
    source.write_map(
        3, property_list_dictionary{
               {"ZZ", account(QStringLiteral("imap://anna%40example.org@mail%2"),
                              QStringList{QStringLiteral(" UID-1 "), QStringLiteral("UID-2")})},
               {"MM", QStringLiteral("no dictionary")},
               {"NN", account(QStringLiteral("local://"), QStringList())},
               {"AA", account(QStringLiteral("pop://b%C3%B6b%00rest"), QStringList{QStringLiteral("UID%2D1")})},
           });
    source.write("anna", 5, QVariantList{signature(QStringLiteral("Later"), QStringLiteral("UID-5"))});
    source.add_file(5, "UID-5", "<body>five");
    const tree_snapshot before(source.folder.path());

    const auto run = source.new_run();
    run->run();

    QCOMPARE(before.changes(), QString());
    const QString difference = source.difference_to("signatures.txt", *run);
    QVERIFY2(difference.isEmpty(), qPrintable(difference));
    QCOMPARE(run->record_signals.last(), 3);
    const QString folder = QStringLiteral("SOURCE/Users/anna/Library/Mail/V3/MailData/Signatures/");
    const auto file_failure = [&](const char *uid) {
        return QStringList{QStringLiteral("file open--------FAILED------") + folder + QLatin1String(uid) +
                               QStringLiteral(".mailsignature"),
                           QStringLiteral("Error :- No such file or directory")};
    };
    const QStringList starts{QStringLiteral("starts")};
    const QStringList ends{QStringLiteral("ends")};
    QCOMPARE(run->log_of(list_operation), starts + file_failure("UID-2") + file_failure("") + ends + starts + ends);
    QCOMPARE(run->log_of(map_operation), starts + ends);
}

void test_macos_signatures::text_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<QString>("text");
    const QByteArray quoted = "Content-Transfer-Encoding: quoted-printable\n";
    const auto row = [](const char *name, const QByteArray &content, const char *text) {
        QTest::newRow(name) << content << QString::fromUtf8(text);
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

void test_macos_signatures::text()
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
    const QString path = folder.filePath(QStringLiteral("sheet.css"));
    evidence::write_file(path, "p{display:none}");
    const QByteArray link = "<link rel=stylesheet href='" + path.toUtf8() + "'></link>";
    QCOMPARE(plain_text_of_signature("<body>" + link + "<p>seen</p>", not_cancelled)->text, QStringLiteral("seen"));
    QVERIFY2(clock.elapsed() < 20000, qPrintable(QString::number(clock.elapsed())));
}

void test_macos_signatures::files_that_are_none()
{
    signature_source source;
    QVariantList list;
    for (const char *uid : {"huge", "../../../secret", "/../../out", "link", "dir", "good"}) {
        list.append(signature(QStringLiteral("x"), QLatin1String(uid)));
    }
    list.append(signature(QStringLiteral("x"), QStringLiteral("zero") + QChar(1)));
    source.write("anna", 4, list);
    const QString huge = source.add_file(4, "huge", "<body>huge");
    QVERIFY(QFile::resize(huge, 100 << 20));
    evidence::write_file(source.folder.filePath(QStringLiteral("out.mailsignature")), "<body>secret");
    evidence::write_file(source.tree.store_folder(QStringLiteral("anna"), 4) +
                             QLatin1String("/../secret.mailsignature"),
                         "<body>secret");
    QVERIFY(QFile::link(source.folder.filePath(QStringLiteral("out.mailsignature")),
                        source.folder_of(4) + QLatin1String("link.mailsignature")));
    QVERIFY(QDir().mkpath(source.folder_of(4) + QLatin1String("dir.mailsignature")));
    source.add_file(4, "good", "<body>good");

    const auto run = source.new_run();
    run->run();

    QCOMPARE(source.column(*run, "signature"), QStringList{QStringLiteral("good")});
    const QStringList lines = run->log_of(list_operation);
    QCOMPARE(lines.filter(QStringLiteral("file open--------FAILED------")).size(), 6);
    QCOMPARE(lines.at(2), QStringLiteral("Error :- File too large"));
    QCOMPARE(lines.last(), QStringLiteral("ends"));
}

void test_macos_signatures::a_signature_assigned_again_and_again()
{
    const signature_source source;
    source.write("anna", 9, QVariantList{signature(::text("often"), ::text("S1"))});
    source.add_file(9, "S1", "<body>text");
    QStringList uids;
    for (int i = 0; i < 2000; ++i) {
        uids.append(::text("S1"));
    }
    source.write_map(9, property_list_dictionary{{"A1", account(::text("imap://anna"), uids)}});

    const auto run = source.new_run();
    run->run();

    const QString sources = source.column(*run, "source_file").value(0);
    QVERIFY2(sources.size() > 16384 && sources.size() < 16600, qPrintable(QString::number(sources.size())));
    QCOMPARE(source.column(*run, "related_account_id"), QStringList{::text("A1")});
    QCOMPARE(run->log_of(map_operation).size(), 3);
}

void test_macos_signatures::wrong_lists()
{
    const QVariant roots[] = {property_list_dictionary{{"a", 1}}, QVariantList{QVariantList(), 5}, QStringLiteral("x")};
    for (const QVariant &root : roots) {
        signature_source source;
        source.write("anna", 3, root);
        source.write_map(3, root);
        const auto run = source.new_run();
        run->run();
        QCOMPARE(run->row_count(source.table), 0);
        const bool is_list = root.type() == QVariant::List;
        const bool is_map = root.userType() == qMetaTypeId<property_list_dictionary>();
        const QString folder = QStringLiteral("SOURCE/Users/anna/Library/Mail/V3/MailData/Signatures/");
        const QStringList list_failure{QStringLiteral("starts"),
                                       QStringLiteral("m_plist blank -------FAILED-------") + folder +
                                           QStringLiteral("AllSignatures.plist"),
                                       QStringLiteral("End with failure")};
        const QStringList map_failure{QStringLiteral("starts"),
                                      QStringLiteral(" m_plist blank -------FAILED-------") + folder +
                                          QStringLiteral("AccountsMap.plist"),
                                      QStringLiteral("end with failure")};
        QCOMPARE(run->log_of(list_operation) == list_failure, !is_list);
        QCOMPARE(run->log_of(map_operation) == map_failure, !is_map);
        QCOMPARE(run->tab_signals, QList<int>{1});
    }
}

void test_macos_signatures::failures_of_the_result_database()
{
    signature_source source;
    source.write("anna", 3, QVariantList{signature(QStringLiteral("a"), QStringLiteral("a"))});
    source.add_file(3, "a", "<body>a");
    source.write_map(3, property_list_dictionary{{"A", account(QString(), QStringList{QStringLiteral("a")})}});

    const auto refusing = source.new_run();
    refusing->prepare();
    run_statement(*refusing, QStringLiteral("create trigger refuse before update on signature begin select "
                                            "raise(abort, 'no update'); end"));
    refusing->extract();
    const QStringList lines = refusing->log_of(map_operation);
    QCOMPARE(lines.mid(1, 2),
             (QStringList{QStringLiteral("insert_query --------FAILED------") + refusing->database_path(),
                          QStringLiteral("Error :- no update")}));
    QVERIFY(lines.at(3).startsWith(QLatin1String("update signature Set related_account_id = ?,")));
    QCOMPARE(lines.last(), QStringLiteral("ends"));

    const auto closed = source.new_run();
    closed->prepare();
    close_result_database(*closed);
    closed->extract();
    for (const QString &operation : {list_operation, map_operation}) {
        QCOMPARE(closed->log_of(operation),
                 (QStringList{QStringLiteral("starts"),
                              QStringLiteral("destination_db open --------FAILED------") + closed->database_path(),
                              QStringLiteral("Error :- unable to open database file")}));
    }
}

QTEST_MAIN(test_macos_signatures)
#include "test_macos_signatures.moc"
