/// Short forms that tests share, whatever they test.
#pragma once

#include "evidence/files.h"

#include <QFile>
#include <QTest>

#include <ctime>
#include <sys/stat.h>

inline QString operator""_s(const char *utf8, std::size_t size)
{
    return QString::fromUtf8(utf8, static_cast<int>(size));
}

/// The columns of a table of texts.
template <typename... Names>
void text_columns(Names... names)
{
    (QTest::addColumn<QString>(names), ...);
}

/// A row of a table whose columns are texts, in UTF-8.
template <typename... Texts>
void text_row(const char *name, Texts... texts)
{
    QTestData &row = QTest::newRow(name);
    (row << ... << QString::fromUtf8(texts));
}

inline void set_time_zone(const QByteArray &zone)
{
    qputenv("TZ", zone);
    ::tzset();
}

inline QByteArray content_of(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("no file");
}

/// A pipe that nobody writes to: whoever opens it to read, waits.
inline void make_pipe(const QString &path)
{
    QCOMPARE(::mkfifo(path.toUtf8().constData(), 0600), 0);
}
