/// Drives a plug-in object through a whole run, as a host does, and keeps what came out of it: rows, log lines,
/// signals.
#pragma once

#include "core/mail.h"

#include <QList>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>

class host_run
{
public:
    /// In: the scheme, the root of the evidence tree, and the tabs to extract.
    host_run(QString scheme, QString source_root, QStringList tabs);

    int engine_type = 0;
    int source_count = 1;
    bool is_logging = true;
    QString source_type;
    QStringList users; ///< the accounts of the source, "name" or "name:domain"
    ios_uid_backup_parser *backup_parser = nullptr;

    /// The steps up to the search for sources, the extraction, the clean-up.
    void prepare();
    void extract();
    void finish();
    void run();

    mail &plugin() { return object; }
    QString result_directory() const { return directory.path(); }
    QString database_path() const { return directory.path() + QLatin1String("/Artifacts_Result/Mail/Mail.sqlite"); }

    /// The log as "function: message" lines, with SOURCE/ and TMP/ in place of the source root and the folder of the
    /// working copies.
    QStringList log() const;
    /// Those of the operation alone, without its name.
    QStringList log_of(const QString &function) const;
    /// A table as text: a block a row, a line a column that is not NULL, texts in double quotes.
    QString rows(const QString &table) const;
    int row_count(const QString &table) const;

    QList<qint64> record_signals;
    QList<int> tab_signals;

private:
    QString scheme;
    QString source_root;
    QStringList tabs;
    QTemporaryDir directory;
    mail object;
};

/// Compares a text with the file of the name in the test's folder "expected". Out: empty when they are the same, else
/// what differs. A file that is missing differs.
QString difference_to_expected(const QString &actual, const QString &expected_file_path);
