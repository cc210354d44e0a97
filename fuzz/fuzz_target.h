/// What the fuzz targets share. A target is a file that defines fuzz_one, and a line in CMakeLists.txt.
#pragma once

#include <QByteArray>
#include <QString>

/// Reads one hostile input by the road under test. Defined by each target; a sanitizer's finding, a requirement that
/// does not hold and a time or memory without bound are what the fuzzer reports.
void fuzz_one(const QByteArray &input);

/// Ends the process when what the road gave cannot be right; the fuzzer keeps the input. In: the statement, as it is to
/// be read in the report.
void require(bool holds, const char *statement);

/// Writes a file for roads that read one. Out: its path, in a folder of the process's own; the file stays until the
/// next one of that name.
QString file_with(const QByteArray &content, const char *name = "input");
