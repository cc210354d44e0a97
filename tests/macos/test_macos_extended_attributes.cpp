// What the metadata of a file becomes in the rows: the columns with their conversions, the XML document and the text
// for search, from both places that evidence keeps metadata in.
#include "tests/macos/configuration_source.h"

using evidence::metadata_place;

Q_DECLARE_METATYPE(evidence::metadata_place)

class test_macos_extended_attributes : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { source = std::make_unique<macos_source>(); }
    void columns_data();
    void columns();
    void document_data();
    void document();
    void extended_attributes_come_before_apple_double();

private:
    // Runs over the downloaded attachments of the tree, with these attributes wanted.
    std::unique_ptr<host_run> run_over(const QStringList &wanted)
    {
        source->tree.finish();
        auto run = new_run(source->tree, texts({"open_attachments"}));
        run->prepare();
        run->plugin().pub_set_extended_attributes_list(wanted);
        run->extract();
        return run;
    }
    // What is selected of the row of a file.
    QString value_of(const host_run &run, const char *file_name, const QString &selected)
    {
        const QString select = text("select %1 from open_attachments where file_name = '%2'");
        return values_of(run, select.arg(selected, text(file_name))).value(0, text("no row"));
    }
    QString add_download(const char *name) { return source->tree.add_download(text("anna"), text(name), QByteArray()); }
    // Whether the file system of the temporary folder keeps extended attributes of users.
    bool holds_attributes() const { return evidence::holds_extended_attributes(source->folder.path()); }

    std::unique_ptr<macos_source> source;
};

void test_macos_extended_attributes::columns_data()
{
    QTest::addColumn<metadata_place>("place");
    QTest::newRow("extended attributes") << metadata_place::extended_attributes;
    QTest::newRow("AppleDouble") << metadata_place::apple_double;
}

void test_macos_extended_attributes::columns()
{
    QFETCH(metadata_place, place);
    if (place == metadata_place::extended_attributes && !holds_attributes()) {
        QSKIP("The file system of the temporary folder keeps no extended attributes of users.");
    }
    const auto cases = cases_of("attribute_columns.txt");
    for (int i = 0; i < cases.size(); ++i) {
        const QString &stored = cases.at(i).first;
        const QString attribute = stored.section(text(": "), 0, 0);
        evidence::write_file_metadata(add_download(QByteArray::number(i).constData()),
                                      {{attribute, json(stored.section(text(": "), 1).toUtf8())}}, place);
    }

    const auto run = run_over({});
    QStringList expected;
    QStringList actual;
    for (const auto &[stored, shown] : cases) {
        const QString column = shown.section(text(": "), 0, 0);
        const QByteArray name = QByteArray::number(expected.size());
        expected.append(stored + text(" => ") + QString(shown).replace(text("\\n"), text("\n")));
        actual.append(stored + text(" => ") + column + text(": ") +
                      value_of(*run, name.constData(), text("ifnull(%1, 'NULL')").arg(column)));
    }
    QCOMPARE(actual, expected);
}

void test_macos_extended_attributes::document_data()
{
    QTest::addColumn<QStringList>("wanted");
    QTest::addColumn<QString>("search");
    QTest::addColumn<QString>("elements");
    const auto row = [](const char *name, std::initializer_list<const char *> wanted, const char *search,
                        const char *elements) {
        QTest::newRow(name) << texts(wanted) << text(search) << text(elements);
    };
    row("none wanted", {}, "", "");
    row("one that the file lacks", {"kMDItemAuthors"}, "", "");
    row("two", {"kMDItemTitle", "kMDItemAuthors", "kMDItemPageCount"}, "a < b;++::++;5",
        "<kMDItemTitle>a &lt; b</kMDItemTitle>\n<kMDItemPageCount>5</kMDItemPageCount>\n");
    row("of every kind, an empty one between them", {"kMDItemIsScreenCapture", "kMDItemComment", "kMDItemKeywords"},
        "true;++::++;;++::++;x;y",
        "<kMDItemIsScreenCapture>true</kMDItemIsScreenCapture>\n<kMDItemComment></kMDItemComment>\n"
        "<kMDItemKeywords>x;y</kMDItemKeywords>\n");
    row("an empty one at the end loses its separator alone", {"kMDItemTitle", "kMDItemComment"}, "a < b;++::++;",
        "<kMDItemTitle>a &lt; b</kMDItemTitle>\n<kMDItemComment></kMDItemComment>\n");
    row("those with columns are left out", {"kMDItemLatitude", "kMDItemWhereFroms", "kMDItemPageCount"}, "5",
        "<kMDItemPageCount>5</kMDItemPageCount>\n");
    row("origins by a name with blanks", {" kMDItemWhereFroms"}, "", ""); // the file has none of this name
}

void test_macos_extended_attributes::document()
{
    QFETCH(QStringList, wanted);
    QFETCH(QString, search);
    QFETCH(QString, elements);
    const QString file = add_download("file");
    evidence::write_file_metadata(file,
                                  {{"kMDItemTitle", text("a < b")},
                                   {"kMDItemPageCount", 5},
                                   {"kMDItemIsScreenCapture", true},
                                   {"kMDItemComment", text("")},
                                   {"kMDItemKeywords", texts({"x", "y"})},
                                   {"kMDItemLatitude", 1.5},
                                   {"kMDItemWhereFroms", QStringList{text("x")}}},
                                  metadata_place::apple_double);
    source->tree.write_opened_attachments(text("anna"), text("OpenedAttachments.plist"),
                                          json(R"([{"Path": "/Users/anna/missing"}])"));

    const auto run = run_over(wanted);
    const QString head = text("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n");
    QString document = head + text("<Extended_Attributes_XML_Header>\n"
                                   "    <Extended_Attributes_Artifact_Source_Header>\n"
                                   "        <File_Path>/Users/anna/Library/Containers/com.apple.mail/Data/Library/"
                                   "Mail Downloads/file</File_Path>\n");
    for (const QString &element : elements.split(QLatin1Char('\n'), Qt::SkipEmptyParts)) {
        document += text("        ") + element + QLatin1Char('\n');
    }
    document += text("    </Extended_Attributes_Artifact_Source_Header>\n</Extended_Attributes_XML_Header>\n");
    QCOMPARE(value_of(*run, "file", text("extended_attributes_value_for_search")), search);
    QCOMPARE(value_of(*run, "file", text("extended_attributes_key_value")), document);
    QCOMPARE(value_of(*run, "missing", text("extended_attributes_value_for_search")), QString());
    QCOMPARE(value_of(*run, "missing", text("extended_attributes_key_value")),
             head + text("<Extended_Attributes_XML_Header/>\n"));
}

void test_macos_extended_attributes::extended_attributes_come_before_apple_double()
{
    if (!holds_attributes()) {
        QSKIP("The file system of the temporary folder keeps no extended attributes of users.");
    }
    const QString file = add_download("file");
    evidence::write_file_metadata(file, {{"kMDItemFSName", text("first")}}, metadata_place::extended_attributes);
    evidence::write_file_metadata(file, {{"kMDItemFSName", text("second")}, {"kMDItemOriginSubject", text("subject")}},
                                  metadata_place::apple_double);

    const auto run = run_over({});
    QCOMPARE(value_of(*run, "file", text("fs_name")), text("first"));
    QCOMPARE(value_of(*run, "file", text("mail_subject")), text("subject"));
}

QTEST_MAIN(test_macos_extended_attributes)
#include "test_macos_extended_attributes.moc"
