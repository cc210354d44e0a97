// The loadable library: what it exports, and that a host which knows only positions reaches the right operations.
#include "evidence/sample_ios_file_tree.h"
#include "tests/core/host_view.h"
#include "tests/services/service_test.h"

#include <QDir>
#include <QLibrary>
#include <QProcess>
#include <QSignalSpy>
#include <QTemporaryDir>

class test_library : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void exports_create_object_alone()
    {
        QProcess nm;
        nm.start("nm"_s, {"-D"_s, "--defined-only"_s, "--format=just-symbols"_s, QStringLiteral(MAIL_LIBRARY)});
        QVERIFY(nm.waitForFinished());
        QCOMPARE(nm.readAllStandardOutput(), QByteArray("create_object\n"));
    }

    void host_drives_a_whole_run_by_position()
    {
        QTemporaryDir folder;
        evidence::sample_ios_file_tree_options sample;
        sample.message_count = 20;
        evidence::write_sample_ios_file_tree(folder.filePath("source"_s), sample);

        const auto create =
            reinterpret_cast<host_view *(*)()>(QLibrary::resolve(QStringLiteral(MAIL_LIBRARY), "create_object"));
        QVERIFY(create);
        const std::unique_ptr<host_view> plugin(create());
        QVERIFY(!plugin->parent());
        QCOMPARE(plugin->objectName(), "mail"_s);
        QCOMPARE(plugin->size(), QSize(400, 300));
        QCOMPARE(plugin->frameStyle(), QFrame::StyledPanel | QFrame::Raised);
        QCOMPARE(plugin->windowTitle(), "Frame"_s);
        QSignalSpy records(plugin.get(), SIGNAL(signal_extracted_records_of_plugin_overall(qint64)));
        QSignalSpy tabs(plugin.get(), SIGNAL(signal_tab_processed_of_plugin_overall(int)));
        const QString log_path = folder.filePath("run.log"_s);
        const QString database_path = folder.filePath("Artifacts_Result/Mail/Mail.sqlite"_s);
        const QString copies_path = folder.filePath("Artifacts_Result/Mail/tmp"_s);

        QCOMPARE(plugin->pub_get_artifact_name(), "Mail"_s);
        plugin->pub_set_essentials();
        plugin->pub_set_engine_type(2);
        struct_GLOBAL_COMMON_TRAWL_AND_ARTIFACT_general_info general;
        general.debug_mode_status_bool = true;
        general.debug_print_in_file_bool = true;
        general.debug_file_path_QString = log_path;
        plugin->pub_set_general_info(general);
        QVERIFY(QFile::exists(log_path));
        struct_GLOBAL_COMMON_TRAWL_AND_ARTIFACT_source_info source;
        source.source_root_path_QString = folder.filePath("source/"_s);
        source.os_scheme_internal_QString = "iOS_Uniform"_s;
        plugin->pub_set_source_info(source);
        plugin->pub_set_desktop_info({});
        plugin->pub_set_source_count(7);
        plugin->pub_set_ios_uid_backup_pointer(nullptr);
        plugin->pub_set_essential_for_trawl_bench_extraction({"messages"_s}, {});
        plugin->pub_set_extended_attributes_list({});
        QVERIFY(!QFile::exists(copies_path));
        plugin->pub_set_result_directory(folder.path() + "/"_s); // other hosts leave the slash out
        QVERIFY(QFile::exists(copies_path));
        QVERIFY(!QFile::exists(database_path));
        plugin->pub_create_db_tables();
        QVERIFY(QFile::exists(database_path));
        plugin->pub_set_clear_db(true);
        plugin->pub_find_source_file();
        QCOMPARE(records.count(), 0);
        plugin->pub_extract_artifacts();
        QCOMPARE(records.takeLast().at(0).toLongLong(), 20);
        QCOMPARE(tabs.count(), 1);
        QCOMPARE(QDir(copies_path).entryList(QDir::Files).size(), 2);
        plugin->pub_generate_chat_html_pages();
        plugin->pub_cancel_extraction();
        records.clear();
        plugin->pub_extract_artifacts();
        QCOMPARE(records.count(), 1);
        QVERIFY(QFile::exists(copies_path));
        plugin->pub_remove_temporary_asthetics();
        QVERIFY(!QFile::exists(copies_path));
        QVERIFY(content_of(log_path).contains(
            "][TRAWL_RELAY][Artifacts Extraction][mail::pub_extract_artifacts]:-- END\n"));
    }
};

QTEST_MAIN(test_library)
#include "test_library.moc"
