// What the metadata of a file becomes in the rows: the columns with their conversions, the XML document and the text
// for search, from both places that evidence keeps metadata in.
#include "evidence/macos_mail_tree.h"
#include "tests/support/host_run.h"

#include <QSqlDatabase>
#include <QSqlQuery>
#include <QTest>

using evidence::metadata_place;
using evidence::property_list_dictionary;

Q_DECLARE_METATYPE(evidence::metadata_place)

namespace {

QDateTime instant(qint64 seconds)
{
    return QDateTime::fromSecsSinceEpoch(seconds, Qt::UTC);
}

struct attribute_case
{
    const char *attribute;
    QVariant value;
    const char *column;
    const char *expected; // null: NULL
};

QString text(const char *utf8)
{
    return QString::fromUtf8(utf8);
}

const std::vector<attribute_case> &attribute_cases()
{
    static const QStringList origins{text("https://a.example/x,y%20z"), text("https://b.example/It\\U2019s"),
                                     text("Ben <ben@example.org>, \"mail\" (2)")};
    static const std::vector<attribute_case> cases{
        {"kMDItemDateAdded", instant(1425205230), "date_added", "1425205230"},
        {"kMDItemContentCreationDate", instant(1425205230), "content_creation_date", "1425205230"},
        {"kMDItemContentCreationDate", instant(1000), "content_creation_date", nullptr}, // before March 1973
        {"kMDItemContentCreationDate", text("2015"), "content_creation_date", nullptr},
        {"kMDItemContentModificationDate", instant(1425205230), "content_modification_date", "1425205230"},
        {"kMDItemFSContentChangeDate", instant(1425205230), "fs_content_change_date", "1425205230"},
        {"kMDItemFSCreationDate", instant(1425205230), "fs_creation_date", "1425205230"},
        {"kMDItemContentType", text("com.adobe.pdf"), "content_type", "com.adobe.pdf"},
        {"kMDItemContentType", text("a=b}\"c"), "content_type", "a"}, // up to a second equals sign
        {"kMDItemContentType", instant(1425205230), "content_type", nullptr},
        {"kMDItemContentType", text("Größe  €"), "content_type", "Größe  €"},
        {"kMDItemContentType", text("¤"), "content_type", nullptr}, // no MacRoman character
        {"kMDItemContentType", text("文書"), "content_type", nullptr},
        {"kMDItemFSName", text("文書"), "fs_name", "文書"},
        {"kMDItemFSNodeCount", 7, "fs_node_count", "7"},
        {"kMDItemFSNodeCount", -7, "fs_node_count", nullptr},
        {"kMDItemAltitude", 12.5, "altitude", "12.50000000000000000000"},
        {"kMDItemLatitude", 12.5, "latitude", nullptr},
        {"kMDItemLongitude", 12.5, "longitude", nullptr},
        {"kMDItemWhereFroms", origins, "wherefrom",
         "https://a.example/x;y z;https://b.example/It's;Ben <ben@example.org>; mail (2)"},
        {"kMDItemWhereFroms", QStringList{text("one")}, "wherefrom", "one"},
        {"kMDItemWhereFroms", QStringList{text("50%2525")}, "wherefrom", "50%"},
        {"org_bittorrent_torrent_filenames", QStringList{text("a,b.iso"), text("c%C3%BC.iso")}, "torrent_file_list",
         "a,b.iso;cü.iso"},
        {"kMDItemOriginMessageID", text("abc@example.org"), "message_id", "abc@example.org"},
        {"kMDItemOriginMessageID", QStringList{text("a}b")}, "message_id", "(\n    ab\n)"}, // no equals sign
        {"kMDItemOriginSenderDisplayName", text(" Ben "), "sender_display_name", "Ben"},
        {"kMDItemOriginSenderHandle", text("<ben@example.org>"), "sender_handle_id", "- ben@example.org"},
        {"kMDItemOriginSubject", text("Re: \"plan\""), "mail_subject", "Re: plan"},
        {"kMDItemOriginSubject", QByteArray("data"), "mail_subject", nullptr},
    };
    return cases;
}

QString printed(const QVariant &value)
{
    return value.isNull() ? QStringLiteral("NULL") : QLatin1Char('"') + value.toString() + QLatin1Char('"');
}

} // namespace

class test_macos_extended_attributes : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { folder = std::make_unique<QTemporaryDir>(); }
    void columns_data();
    void columns();
    void document_data();
    void document();
    void extended_attributes_come_before_apple_double();

private:
    // Runs over the downloaded attachments of the tree, with these attributes wanted.
    std::unique_ptr<host_run> run_over(const evidence::macos_mail_tree &tree, const QStringList &wanted);
    QVariant value_of(const host_run &run, const QString &file_name, const char *column);

    std::unique_ptr<QTemporaryDir> folder;
};

std::unique_ptr<host_run> test_macos_extended_attributes::run_over(const evidence::macos_mail_tree &tree,
                                                                   const QStringList &wanted)
{
    auto run = std::make_unique<host_run>(QStringLiteral("macOS"), tree.root(),
                                          QStringList{QStringLiteral("open_attachments")});
    run->users = QStringList{QStringLiteral("anna")};
    run->prepare();
    run->plugin().pub_set_extended_attributes_list(wanted);
    run->extract();
    return run;
}

QVariant test_macos_extended_attributes::value_of(const host_run &run, const QString &file_name, const char *column)
{
    QVariant value;
    {
        QSqlDatabase database = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), QStringLiteral("test"));
        database.setDatabaseName(run.database_path());
        database.open();
        QSqlQuery query(database);
        query.prepare(QStringLiteral("select %1 from open_attachments where file_name = ?").arg(QLatin1String(column)));
        query.addBindValue(file_name);
        value = query.exec() && query.next() ? query.value(0) : QVariant(QStringLiteral("no row"));
    }
    QSqlDatabase::removeDatabase(QStringLiteral("test"));
    return value;
}

void test_macos_extended_attributes::columns_data()
{
    QTest::addColumn<metadata_place>("place");
    QTest::newRow("extended attributes") << metadata_place::extended_attributes;
    QTest::newRow("AppleDouble") << metadata_place::apple_double;
}

void test_macos_extended_attributes::columns()
{
    QFETCH(metadata_place, place);
    if (place == metadata_place::extended_attributes && !evidence::holds_extended_attributes(folder->path())) {
        QSKIP("The file system of the temporary folder keeps no extended attributes of users.");
    }
    evidence::macos_mail_tree tree(folder->path());
    int number = 0;
    for (const attribute_case &stored : attribute_cases()) {
        const QString file = tree.add_download(QStringLiteral("anna"), QString::number(++number), QByteArray());
        evidence::write_file_metadata(file, {{stored.attribute, stored.value}}, place);
    }
    tree.finish();

    const auto run = run_over(tree, {});
    QString expected;
    QString actual;
    number = 0;
    for (const attribute_case &stored : attribute_cases()) {
        const QString name = QString::number(++number);
        const QString label = name + QLatin1Char(' ') + QLatin1String(stored.attribute) + QLatin1String(": ");
        expected += label + printed(stored.expected ? QVariant(text(stored.expected)) : QVariant()) + QLatin1Char('\n');
        actual += label + printed(value_of(*run, name, stored.column)) + QLatin1Char('\n');
    }
    QCOMPARE(actual.split(QLatin1Char('\n')), expected.split(QLatin1Char('\n')));
}

void test_macos_extended_attributes::document_data()
{
    QTest::addColumn<QStringList>("wanted");
    QTest::addColumn<QString>("search");
    QTest::addColumn<QString>("elements");
    QTest::newRow("none wanted") << QStringList{} << QString() << QString();
    QTest::newRow("one that the file lacks") << QStringList{text("kMDItemAuthors")} << QString() << QString();
    QTest::newRow("two") << QStringList{text("kMDItemTitle"), text("kMDItemAuthors"), text("kMDItemPageCount")}
                         << text("a < b;++::++;5")
                         << text("<kMDItemTitle>a &lt; b</kMDItemTitle>\n"
                                 "<kMDItemPageCount>5</kMDItemPageCount>\n");
    QTest::newRow("of every kind, an empty one between them")
        << QStringList{text("kMDItemIsScreenCapture"), text("kMDItemComment"), text("kMDItemKeywords")}
        << text("true;++::++;;++::++;x;y")
        << text("<kMDItemIsScreenCapture>true</kMDItemIsScreenCapture>\n"
                "<kMDItemComment></kMDItemComment>\n<kMDItemKeywords>x;y</kMDItemKeywords>\n");
    QTest::newRow("an empty one at the end loses its separator alone")
        << QStringList{text("kMDItemTitle"), text("kMDItemComment")} << text("a < b;++::++;")
        << text("<kMDItemTitle>a &lt; b</kMDItemTitle>\n<kMDItemComment></kMDItemComment>\n");
    QTest::newRow("those with columns are left out")
        << QStringList{text("kMDItemLatitude"), text("kMDItemWhereFroms"), text("kMDItemPageCount")} << text("5")
        << text("<kMDItemPageCount>5</kMDItemPageCount>\n");
    QTest::newRow("origins by a name with blanks")
        << QStringList{text(" kMDItemWhereFroms")} << QString() << QString(); // the file has none of this name
}

void test_macos_extended_attributes::document()
{
    QFETCH(QStringList, wanted);
    QFETCH(QString, search);
    QFETCH(QString, elements);
    evidence::macos_mail_tree tree(folder->path());
    const QString file = tree.add_download(QStringLiteral("anna"), QStringLiteral("file"), QByteArray());
    evidence::write_file_metadata(file,
                                  {{"kMDItemTitle", text("a < b")},
                                   {"kMDItemPageCount", 5},
                                   {"kMDItemIsScreenCapture", true},
                                   {"kMDItemComment", text("")},
                                   {"kMDItemKeywords", QStringList{text("x"), text("y")}},
                                   {"kMDItemLatitude", 1.5},
                                   {"kMDItemWhereFroms", QStringList{text("x")}}},
                                  metadata_place::apple_double);
    evidence::macos_opened_attachment missing;
    missing.path = text("/Users/anna/missing");
    tree.write_opened_attachments(QStringLiteral("anna"), QStringLiteral("OpenedAttachments.plist"),
                                  QVariantList{missing});
    tree.finish();

    const auto run = run_over(tree, wanted);
    const QString head = text("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n");
    QString document = head + text("<Extended_Attributes_XML_Header>\n"
                                   "    <Extended_Attributes_Artifact_Source_Header>\n"
                                   "        <File_Path>/Users/anna/Library/Containers/com.apple.mail/Data/Library/"
                                   "Mail Downloads/file</File_Path>\n");
    for (const QString &element : elements.split(QLatin1Char('\n'), Qt::SkipEmptyParts)) {
        document += text("        ") + element + QLatin1Char('\n');
    }
    document += text("    </Extended_Attributes_Artifact_Source_Header>\n</Extended_Attributes_XML_Header>\n");
    QCOMPARE(value_of(*run, text("file"), "extended_attributes_value_for_search").toString(), search);
    QCOMPARE(value_of(*run, text("file"), "extended_attributes_key_value").toString(), document);
    QCOMPARE(value_of(*run, text("missing"), "extended_attributes_value_for_search").toString(), QString());
    QCOMPARE(value_of(*run, text("missing"), "extended_attributes_key_value").toString(),
             head + text("<Extended_Attributes_XML_Header/>\n"));
}

void test_macos_extended_attributes::extended_attributes_come_before_apple_double()
{
    if (!evidence::holds_extended_attributes(folder->path())) {
        QSKIP("The file system of the temporary folder keeps no extended attributes of users.");
    }
    evidence::macos_mail_tree tree(folder->path());
    const QString file = tree.add_download(QStringLiteral("anna"), QStringLiteral("file"), QByteArray());
    evidence::write_file_metadata(file, {{"kMDItemFSName", text("first")}}, metadata_place::extended_attributes);
    evidence::write_file_metadata(file, {{"kMDItemFSName", text("second")}, {"kMDItemOriginSubject", text("subject")}},
                                  metadata_place::apple_double);
    tree.finish();

    const auto run = run_over(tree, {});
    QCOMPARE(value_of(*run, text("file"), "fs_name").toString(), text("first"));
    QCOMPARE(value_of(*run, text("file"), "mail_subject").toString(), text("subject"));
}

QTEST_MAIN(test_macos_extended_attributes)
#include "test_macos_extended_attributes.moc"
