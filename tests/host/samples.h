/// What the test of mail-extract works on, and how it runs the program.
#pragma once

#include "tests/support/short_forms.h"

#include <QProcess>
#include <QTemporaryDir>

constexpr int patience_milliseconds = 60000;
constexpr int sample_messages = 300;

/// Fills the folder: "ios" and "volume" (macOS) are whole sources, "mac", "windows", "backup" and "two" have what
/// sources are recognised by, "bare" has nothing, "shown" is a result folder with a small database.
void make_samples(const QString &folder);

/// Makes the file and its folders.
void write_file(const QString &path, const QByteArray &content);
/// The result database of a result folder, made by a script.
void make_database(const QString &result_folder, const char *script);

/// Paths, sizes and times of everything below the folder: equal only where nothing was written.
QStringList state_of(const QString &folder);

struct finished_program
{
    int exit_code = -1; ///< -1: it crashed or did not end in time
    QString output;
    QString errors;
};

/// In: the working folder, the arguments with blanks between.
void start_program(QProcess &process, const QString &folder, const QString &arguments);
finished_program finish_program(QProcess &process);
/// Fails the test when the program does not end with the exit code.
finished_program run_program(const QString &folder, const QString &arguments, int exit_code);
/// The same as a user to whom permissions mean something, where the test is run by root.
finished_program run_program_without_privileges(const QString &folder, const QString &arguments);
