#include "evidence/ese_file.h"

#include "evidence/ese_bytes.h"
#include "evidence/ese_catalog.h"
#include "evidence/ese_page.h"
#include "evidence/ese_table_writer.h"
#include "evidence/ese_tree.h"
#include "evidence/files.h"

#include <QFile>

#include <algorithm>
#include <array>

namespace evidence {

namespace ese {

namespace {

constexpr quint32 database_page = 1; // the root of the tree that owns all pages, and its two space trees
constexpr quint32 owned_extents_page = 2;
constexpr quint32 available_extents_page = 3;
constexpr quint32 catalog_page = 4;
constexpr quint32 catalog_copy_page = 24;
constexpr quint32 database_object = 1;
constexpr quint32 catalog_object = 2;
constexpr quint32 catalog_copy_object = 3;
constexpr int objects_of_table = 2; // the records and the long values

/// The fields of the file header.
class header_fields
{
public:
    explicit header_fields(int page_size) : header(page_size, '\0') {}

    void put(int offset, const QByteArray &field) { header.replace(offset, field.size(), field); }
    void put(int offset, quint32 number) { put(offset, little_endian(number)); }
    const QByteArray &bytes() const { return header; }

private:
    QByteArray header;
};

} // namespace

class file_writer final : public page_store
{
public:
    file_writer(const QString &path, const ese_file_options &options);

    table_writer &add_table(const QByteArray &name, const std::vector<ese_column> &columns,
                            key_storage long_value_keys);
    void finish();

    const file_format &format() const override { return page_format; }
    quint32 allocate() override;
    void write(quint32 number, const QByteArray &page) override;

private:
    void write_at(qint64 offset, const QByteArray &bytes);
    void write_database_pages();
    QByteArray header() const;

    ese_file_options options;
    file_format page_format;
    QFile file;
    quint32 last_page = catalog_page;
    quint32 last_object = catalog_copy_object;
    std::vector<std::unique_ptr<table_writer>> tables;
};

file_writer::file_writer(const QString &path, const ese_file_options &options)
    : options(options), page_format{options.page_size, options.format_revision}, file(path)
{
    constexpr std::array<int, 4> page_sizes{4096, 8192, 16384, 32768};
    if (std::find(page_sizes.begin(), page_sizes.end(), options.page_size) == page_sizes.end() ||
        (options.page_size > 8192 && !page_format.has_large_pages())) {
        throw evidence_error(
            QStringLiteral("A file of that revision cannot have pages of %1 bytes.").arg(options.page_size));
    }
    make_folder(folder_of(path));
    if (!file.open(QIODevice::WriteOnly | QIODevice::NewOnly | QIODevice::Unbuffered)) {
        throw evidence_error(QStringLiteral("%1 cannot be made: %2.").arg(path, file.errorString()));
    }
    const std::vector<ese_column> columns = catalog_columns(page_format);
    const auto add_catalog = [this, &columns](const char *name, tree_place place) {
        tables.push_back(
            std::make_unique<table_writer>(*this, name, columns, place, 0, key_storage::shared_beginnings));
    };
    add_catalog("MSysObjects", {catalog_page, catalog_object});
    add_catalog("MSysObjectsShadow", {catalog_copy_page, catalog_copy_object});
}

table_writer &file_writer::add_table(const QByteArray &name, const std::vector<ese_column> &columns,
                                     key_storage long_value_keys)
{
    const tree_place records{allocate(), last_object + 1};
    tables.push_back(
        std::make_unique<table_writer>(*this, name, columns, records, records.object + 1, long_value_keys));
    last_object += objects_of_table;
    return *tables.back();
}

quint32 file_writer::allocate()
{
    ++last_page;
    last_page += last_page == catalog_copy_page ? 1 : 0;
    return last_page;
}

void file_writer::write(quint32 number, const QByteArray &page)
{
    write_at((static_cast<qint64>(number) + 1) * page_format.page_size, page);
}

void file_writer::write_at(qint64 offset, const QByteArray &bytes)
{
    if (!file.seek(offset) || file.write(bytes) != bytes.size()) {
        throw evidence_error(QStringLiteral("%1 cannot be written: %2.").arg(file.fileName(), file.errorString()));
    }
}

void file_writer::finish()
{
    for (auto table = tables.begin() + 2; table != tables.end(); ++table) {
        (*table)->finish();
    }
    write_catalog(page_format, tables);
    last_page = std::max(last_page, catalog_copy_page);
    write_database_pages();
    const QByteArray written_header = header();
    write_at(0, written_header);
    write_at(page_format.page_size, written_header);
    file.close();
}

/// The whole file is one extent of the database: an entry with its last page as key and its size.
void file_writer::write_database_pages()
{
    constexpr quint32 in_many_extents = 1;
    const auto write_root = [this](quint32 number, quint32 flags, const page_builder &page) {
        write(number, page.finish({number, 0, 0, database_object, flags | page_flag::root | page_flag::leaf}));
    };
    write_root(database_page, 0,
               page_builder(page_format, little_endian(last_page) + little_endian(0U) + little_endian(in_many_extents) +
                                             little_endian(owned_extents_page)));
    const QByteArray empty_root_header(16, '\0');
    page_builder owned(page_format, empty_root_header);
    owned.add(big_endian(last_page), 0, little_endian(last_page));
    write_root(owned_extents_page, page_flag::space_tree, owned);
    write_root(available_extents_page, page_flag::space_tree, page_builder(page_format, empty_root_header));
}

QByteArray file_writer::header() const
{
    constexpr quint32 signature = 0x89abcdef;
    constexpr quint32 version = 0x620;
    constexpr quint32 clean = 3;
    constexpr quint32 dirty = 2;
    constexpr quint32 has_error_counts = 0x01000000;
    constexpr quint32 random_of_signature = 0x4d41494c;
    // Seconds, minutes, hours, day, month, years since 1900.
    const QByteArray written = QByteArray::fromHex("1e2d0c1104720000");
    const QByteArray log_position = QByteArray::fromHex("1b00000001000000");
    header_fields fields(page_format.page_size);
    fields.put(4, signature);
    fields.put(8, version);
    fields.put(16, last_page); // changes since the file was made
    fields.put(24, random_of_signature);
    fields.put(28, written);
    fields.put(52, options.cleanly_shut_down ? clean : dirty);
    fields.put(72, written); // attached
    fields.put(80, log_position);
    if (options.cleanly_shut_down) {
        fields.put(56, log_position); // consistent
        fields.put(64, written);
        fields.put(88, written); // detached
        fields.put(96, log_position);
    } else {
        fields.put(296, little_endian(1U) + little_endian(1U)); // the logs that are required
    }
    fields.put(212, last_object);
    fields.put(216, 6U); // Windows 6.1
    fields.put(220, 1U);
    fields.put(232, page_format.revision);
    fields.put(236, static_cast<quint32>(page_format.page_size));
    fields.put(340, version);
    fields.put(344, page_format.revision);
    fields.put(664, has_error_counts);
    fields.put(0, header_checksum(fields.bytes()));
    return fields.bytes();
}

} // namespace ese

ese_file::ese_file(const QString &path, const ese_file_options &options)
    : writer(std::make_unique<ese::file_writer>(path, options))
{
}

ese_file::~ese_file() = default;

ese_table ese_file::add_table(const QByteArray &name, const std::vector<ese_column> &columns,
                              ese_long_value_layout layout)
{
    const bool ordinary = layout == ese_long_value_layout::ordinary;
    return ese_table(writer->add_table(
        name, columns, ordinary ? ese::key_storage::shared_beginnings : ese::key_storage::in_first_entry));
}

void ese_file::finish()
{
    writer->finish();
}

int ese_table::add_record(const std::vector<ese_value> &values)
{
    return writer.add_record(values);
}

} // namespace evidence
