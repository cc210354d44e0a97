/// ESE files as a fuzzer changes them. A whole file is mostly zeros and larger than inputs are; so the input says what
/// is changed in one that is sound.
#pragma once

#include <QByteArray>
#include <QByteArrayList>

/// The name of the table with the values, and what its long values hold, by their number less one.
extern const char *const table_of_values;
QByteArrayList long_values_of_table();

/// In: the first byte chooses one of the sound files, which differ in page size; each three bytes behind it are a
/// change: the place, counted in the bytes that are not zero and those beside them (two bytes, little-endian), and what
/// stands there then. Out: the file, with a right sum in its header, since one with a wrong sum is not opened.
QByteArray changed_ese_file(const QByteArray &input);
