// Facts about a file: the metadata that it carries, as columns, as an XML document and as a text for search. Fills no
// table itself.
#include "macos/mail_macos.h"
#include "services/file_metadata.h"

#include <QRegularExpression>
#include <QXmlStreamWriter>

namespace {

const QLatin1String separator(";++::++;");

// --- From a printed description to a value ---------------------------------------------------------------------------

// Behind the first "=" of a description such as <CFString 0x… [0x…]>{contents = "…"}, without braces and double quotes.
QString cut_contents(const QString &description, const QString &without_equals_sign)
{
    const QStringList parts = description.split(QLatin1Char('='));
    QString value = parts.size() > 1 ? parts.at(1) : without_equals_sign;
    return value.remove(QLatin1Char('}')).remove(QLatin1Char('"'));
}

QString contents_or_nothing(const QString &description)
{
    return cut_contents(description, QString()).trimmed();
}

QString contents_or_all(const QString &description)
{
    return cut_contents(description, description).trimmed();
}

// An address in angle brackets keeps a hyphen in front.
QString sender_handle(const QString &description)
{
    return cut_contents(description, description)
        .replace(QLatin1Char('<'), QLatin1String("- "))
        .remove(QLatin1Char('>'))
        .trimmed();
}

// Percent escapes become bytes; what stands behind a zero byte is lost.
QByteArray percent_decoded(const QByteArray &bytes)
{
    return QByteArray(QByteArray::fromPercentEncoding(bytes).constData());
}

QString percent_decoded_local(const QString &text)
{
    return QString::fromLocal8Bit(percent_decoded(text.toLocal8Bit()));
}

// The frame of a printed list: line ends, indents and the outer parentheses.
QString without_list_frame(QString text)
{
    return text.remove(QLatin1Char('\n'))
        .remove(QLatin1String("  "))
        .remove(QLatin1String("(\""))
        .remove(QLatin1String("\")"));
}

// A list of origins as one text, its entries separated by ";".
QString origins(const QString &description)
{
    QString text = without_list_frame(percent_decoded_local(description));
    text.replace(QLatin1String("\","), QLatin1String(";")).replace(QLatin1Char(','), QLatin1Char(';'));
    text.remove(QLatin1Char('"')).replace(QLatin1String("\\U2019s"), QLatin1String("'s"));
    return percent_decoded_local(text).remove(QLatin1Char('"'));
}

QString torrent_files(const QString &description)
{
    QString text = without_list_frame(description);
    text.replace(QLatin1String("\",\""), QLatin1String(";"));
    return QString::fromUtf8(percent_decoded(text.toUtf8()));
}

// --- The attributes that have columns --------------------------------------------------------------------------------

using attribute_record = struct_GLOBAL_ARTIFACT_cfstring_attributes;

// The encoding in which a description is asked for; one that it cannot be written in gives nothing.
enum class encoding
{
    utf8,
    mac_roman
};

struct attribute_column
{
    const char *attribute;
    QString attribute_record::*field;
    encoding asked;
    QString (*convert)(const QString &description);
};

// clang-format off
constexpr attribute_column file_attributes[] = {
    {"kMDItemDateAdded",                 &attribute_record::attr_date_added_QString,                encoding::mac_roman, &plugin_static_function::get_filtered_date_value},
    {"kMDItemKind",                      &attribute_record::attr_kind_QString,                      encoding::mac_roman, &contents_or_all},
    {"kMDItemContentCreationDate",       &attribute_record::attr_content_creation_date_QString,     encoding::mac_roman, &plugin_static_function::get_filtered_date_value},
    {"kMDItemContentModificationDate",   &attribute_record::attr_content_modification_date_QString, encoding::mac_roman, &plugin_static_function::get_filtered_date_value},
    {"kMDItemContentType",               &attribute_record::attr_content_type_QString,              encoding::mac_roman, &contents_or_nothing},
    {"kMDItemFSContentChangeDate",       &attribute_record::attr_fs_content_change_date_QString,    encoding::mac_roman, &plugin_static_function::get_filtered_date_value},
    {"kMDItemFSCreationDate",            &attribute_record::attr_fs_creation_date_QString,          encoding::mac_roman, &plugin_static_function::get_filtered_date_value},
    {"kMDItemFSName",                    &attribute_record::attr_fs_name_QString,                   encoding::utf8,      &contents_or_nothing},
    {"kMDItemWhereFroms",                &attribute_record::attr_wherefrom_QString,                 encoding::utf8,      &origins},
    {"kMDItemFSNodeCount",               &attribute_record::attr_fs_node_count_QString,             encoding::mac_roman, &plugin_static_function::get_filtered_number_value},
    {"kMDItemAltitude",                  &attribute_record::attr_altitude_QString,                  encoding::mac_roman, &plugin_static_function::get_filtered_number_value},
    {"org_bittorrent_torrent_filenames", &attribute_record::attr_torrent_file_list_QString,         encoding::utf8,      &torrent_files},
};

constexpr attribute_column mail_attributes[] = {
    {"kMDItemOriginMessageID",         &attribute_record::attr_origin_message_id_QString,          encoding::mac_roman, &contents_or_all},
    {"kMDItemOriginSenderDisplayName", &attribute_record::attr_origin_sender_display_name_QString, encoding::mac_roman, &contents_or_all},
    {"kMDItemOriginSenderHandle",      &attribute_record::attr_origin_sender_handle_QString,       encoding::mac_roman, &sender_handle},
    {"kMDItemOriginSubject",           &attribute_record::attr_origin_subject_QString,             encoding::mac_roman, &contents_or_all},
};
// clang-format on

// The characters of MacRoman above ASCII; U+F8FF is its apple.
const QString mac_roman_characters = QStringLiteral(u"ÄÅÇÉÑÖÜáàâäãåçéèêëíìîïñóòôöõúùûü†°¢£§•¶ß®©™´¨≠ÆØ∞±≤≥¥µ∂∑∏π∫ªºΩæø¿"
                                                    u"¡¬√ƒ≈∆«»…\u00a0ÀÃÕŒœ–—“”‘’÷◊ÿŸ⁄€‹›ﬁﬂ‡·‚„‰ÂÊÁËÈÍÎÏÌÓÔ"
                                                    u"\uf8ffÒÚÛÙıˆ˜¯˘˙˚¸˝˛ˇ");

bool is_mac_roman(const QString &text)
{
    for (const QChar character : text) {
        if (character.unicode() >= 0x80 && !mac_roman_characters.contains(character)) {
            return false;
        }
    }
    return true;
}

template <std::size_t Count>
attribute_record attributes_of(const file_metadata &item, const attribute_column (&columns)[Count])
{
    attribute_record record;
    if (item.is_empty()) {
        return record;
    }
    for (const attribute_column &column : columns) {
        const QString description = item.attribute_description(QString::fromLatin1(column.attribute));
        if (!description.isNull() && (column.asked == encoding::utf8 || is_mac_roman(description))) {
            record.*column.field = column.convert(description);
        }
    }
    return record;
}

// --- The attributes that the host asked for --------------------------------------------------------------------------

QString filtered(const QString &description, const QString &attribute)
{
    if (description.startsWith(QLatin1String("<CFNumber "))) {
        return plugin_static_function::get_filtered_number_value(description);
    }
    if (description.startsWith(QLatin1String("<CFBoolean "))) {
        return plugin_static_function::get_filtered_boolean_value(description);
    }
    if (description.startsWith(QLatin1String("<CFString "))) {
        return plugin_static_function::get_filtered_cfstring_value(description);
    }
    return attribute.trimmed() == QLatin1String("kMDItemWhereFroms")
               ? plugin_static_function::get_filtered_wherefrom_value(description)
               : plugin_static_function::get_filtered_string_value(description);
}

bool is_element_name(const QString &name)
{
    static const QRegularExpression form(QStringLiteral("^[A-Za-z_][A-Za-z0-9._-]*$"));
    return form.match(name).hasMatch();
}

// The values for search and the XML document, built up file by file.
class attribute_document
{
public:
    attribute_document() : xml(&document)
    {
        xml.setAutoFormatting(true);
        xml.writeStartDocument();
        xml.writeStartElement(QStringLiteral("Extended_Attributes_XML_Header"));
    }

    /// Out: false when the extraction was cancelled.
    bool append(const file_metadata &item, const QString &shown_path, const QStringList &names,
                const std::atomic<bool> &cancel_flag)
    {
        xml.writeStartElement(QStringLiteral("Extended_Attributes_Artifact_Source_Header"));
        xml.writeTextElement(QStringLiteral("File_Path"), shown_path);
        for (const QString &name : names) {
            if (cancel_flag) {
                return false;
            }
            const QString description = item.attribute_description(name);
            if (!description.isNull()) {
                const QString value = filtered(description, name);
                search += value + separator;
                if (is_element_name(name)) { // the writer takes any name, and the document would be none
                    xml.writeTextElement(name, value);
                }
            }
        }
        xml.writeEndElement();
        return true;
    }

    extended_attributes finish()
    {
        xml.writeEndElement();
        xml.writeEndDocument();
        if (search.endsWith(separator)) {
            search.chop(separator.size());
        }
        return {search, QString::fromLocal8Bit(document.constData())}; // up to the first zero byte
    }

private:
    QByteArray document;
    QXmlStreamWriter xml;
    QString search;
};

} // namespace

struct_GLOBAL_ARTIFACT_cfstring_attributes mail_macos::extract_cfstring_attributes(const file_metadata &item) const
{
    return attributes_of(item, file_attributes);
}

struct_GLOBAL_ARTIFACT_cfstring_attributes mail_macos::extract_cfstring_attributes_mail(const QString &file_path) const
{
    const std::optional<file_metadata> item =
        source.contains(file_path) ? file_metadata::item_at(file_path) : std::nullopt;
    return item ? attributes_of(*item, mail_attributes) : attribute_record();
}

extended_attributes mail_macos::get_extended_attributes(const std::optional<file_metadata> &item,
                                                        const QString &file_path, const QStringList &names) const
{
    if (cancel_extraction_bool) {
        return extended_attributes();
    }
    attribute_document document;
    if (item && !document.append(*item, behind_source_root(file_path), names, cancel_extraction_bool)) {
        return extended_attributes();
    }
    return document.finish();
}

macos_file_facts mail_macos::facts_of(const QString &file_path) const
{
    macos_file_facts facts;
    std::optional<file_metadata> item;
    if (!file_path.trimmed().isEmpty() && source.contains(file_path)) {
        facts.is_there = true;
        const file_status status = status_of(file_path);
        facts.created = status.created ? QString::number(*status.created) : QString();
        facts.file_size = status.regular_size ? QString::number(*status.regular_size)
                                              : plugin_static_function::mining_size(file_path);
        item = file_metadata::item_at(file_path);
    }
    if (item) {
        facts.used = plugin_static_function::extract_used_date(*item);
        facts.attributes = extract_cfstring_attributes(*item);
    }
    facts.extended = get_extended_attributes(item, file_path, extended_attributes_QStringList);
    return facts;
}

void mail_macos::append_closing_columns(row_values &row, const macos_file_facts &facts) const
{
    row.insert(row.end(), {
                              {"extended_attributes_key_value", facts.extended.key_value},
                              {"extended_attributes_value_for_search", facts.extended.value_for_search},
                              {"source_count_name", plugin_static_function::get_source_count_name()},
                              {"os_scheme_display", os_scheme_display_QString},
                          });
}
