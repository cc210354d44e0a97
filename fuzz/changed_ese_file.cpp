#include "fuzz/changed_ese_file.h"

#include "evidence/ese_file.h"
#include "evidence/ese_page.h"
#include "fuzz/fuzz_target.h"

#include <QFile>
#include <QTemporaryDir>
#include <QtEndian>

#include <vector>

using evidence::ese_codepage;
using evidence::ese_column;
using evidence::ese_compression;
using evidence::ese_storage;
using evidence::ese_type;
using evidence::ese_value;

const char *const table_of_values = "Values";

namespace {

constexpr int page_sizes[] = {4096, 8192, 16384};
constexpr int record_count = 30; // more than a page of 4 KiB holds
constexpr int change_size = 3;

struct sound_file
{
    QByteArray content;
    int page_size;
    std::vector<int> places; // that can be changed
};

const std::vector<ese_column> columns = {
    {"true", ese_type::boolean},
    {"8", ese_type::unsigned8},
    {"16", ese_type::signed16},
    {"32", ese_type::signed32},
    {"float", ese_type::float32},
    {"double", ese_type::float64},
    {"date", ese_type::date_time},
    {"u32", ese_type::unsigned32},
    {"s64", ese_type::signed64},
    {"guid", ese_type::guid},
    {"binary", ese_type::binary},
    {"text", ese_type::text},
    {"western", ese_type::text, ese_codepage::windows_1252},
    {"numbers", ese_type::signed32, ese_codepage::utf16, ese_storage::tagged},
    {"large binary", ese_type::long_binary},
    {"large text", ese_type::long_text},
    {"large western", ese_type::long_text, ese_codepage::windows_1252},
};

std::vector<ese_value> values_of_record(int index)
{
    const QString text = QStringLiteral("Text %1").arg(index);
    ese_value binary = ese_value::bytes(QByteArray(40, static_cast<char>(index))).compressed(ese_compression::lzxpress);
    ese_value large = ese_value::text(text.repeated(4)).compressed(ese_compression::seven_bit_unicode);
    const QByteArrayList long_values = long_values_of_table();
    if (index < long_values.size()) {
        binary = ese_value::bytes(long_values.at(index)).as_long_value();
        binary = index % 2 == 1 ? binary.compressed(ese_compression::lzxpress) : binary;
        large = ese_value();
    }
    return {ese_value::boolean(true),
            ese_value::number(index),
            ese_value::number(-1),
            index % 3 == 0 ? ese_value() : ese_value::number(index),
            ese_value::number(-2.5),
            ese_value::number(2.5),
            ese_value::number(Q_INT64_C(132000000000000001)),
            ese_value::number(5),
            ese_value::number(-5),
            ese_value::bytes(QByteArray(16, '\xa1')),
            ese_value::bytes("\xff"),
            ese_value::text(text),
            ese_value::text(text),
            ese_value::several({ese_value::number(1), ese_value::number(2)}),
            binary,
            large,
            ese_value::text(text).compressed(ese_compression::seven_bit_ascii)};
}

sound_file make_sound_file(int page_size)
{
    const QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("sound"));
    evidence::ese_file_options options;
    options.page_size = page_size;
    evidence::ese_file file(path, options);
    evidence::ese_table table = file.add_table(table_of_values, columns);
    for (int index = 0; index < record_count; ++index) {
        table.add_record(values_of_record(index));
    }
    file.finish();
    QFile written(path);
    require(written.open(QIODevice::ReadOnly), "the sound file can be read");
    sound_file made{written.readAll(), page_size, {}};
    for (int at = 0; at < made.content.size(); ++at) {
        const bool is_copy_of_header = at >= page_size && at < 2 * page_size;
        if (!is_copy_of_header && made.content.mid(at > 0 ? at - 1 : 0, 3).count('\0') < 3) {
            made.places.push_back(at);
        }
    }
    return made;
}

} // namespace

QByteArrayList long_values_of_table()
{
    return {QByteArray("abc"), QByteArray("many times ").repeated(200), QByteArray(9000, 'x'),
            QByteArray("other times ").repeated(900)};
}

QByteArray changed_ese_file(const QByteArray &input)
{
    static const std::vector<sound_file> files = [] {
        std::vector<sound_file> made;
        for (const int page_size : page_sizes) {
            made.push_back(make_sound_file(page_size));
        }
        return made;
    }();
    const auto chosen = input.isEmpty() ? 0U : static_cast<unsigned char>(input.at(0)) % files.size();
    const sound_file &sound = files[chosen];
    QByteArray content = sound.content;
    for (int at = 1; at + change_size <= input.size(); at += change_size) {
        const std::size_t place = qFromLittleEndian<quint16>(input.constData() + at) % sound.places.size();
        content[sound.places[place]] = input.at(at + 2);
    }
    const quint32 sum = evidence::ese::header_checksum(content.left(sound.page_size));
    qToLittleEndian(sum, content.data());
    return content;
}
