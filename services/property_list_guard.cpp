#include "services/property_list_guard.h"

#include <QXmlStreamReader>

#include <algorithm>
#include <optional>
#include <vector>

namespace {

constexpr int depth_limit = 512;
constexpr quint64 node_size = 160; // about what the library keeps for a value, beside its content
constexpr int tag_length_limit = 4096;
constexpr quint64 entity_moves_limit = Q_UINT64_C(2000) << 20;
constexpr int trailer_size = 32;
constexpr int header_size = 8;

// --- XML -------------------------------------------------------------------------------------------------------------

// Control characters stand in texts of real lists although XML forbids them; to the nesting they mean nothing. The
// library takes every list as UTF-8, whatever it says of itself, so the reader gets it as text: in another encoding it
// would see another nesting.
QString as_the_library_reads_it(QByteArray content)
{
    for (char &byte : content) {
        const auto value = static_cast<unsigned char>(byte);
        if (value < 0x20 && byte != '\n' && byte != '\r' && byte != '\t') {
            byte = ' ';
        }
    }
    return QString::fromUtf8(content);
}

// Out: where the markup ends that begins at a "<"; -1 for a tag without end or of a length that no list needs. A reader
// compares each attribute of a tag with all others.
int end_of_markup(const QByteArray &content, int begin)
{
    struct bracket
    {
        const char *open;
        const char *close;
    };
    static constexpr bracket brackets[] = {{"<!--", "-->"}, {"<![CDATA[", "]]>"}};
    for (const bracket &candidate : brackets) {
        if (qstrncmp(content.constData() + begin, candidate.open, qstrlen(candidate.open)) == 0) {
            return content.indexOf(candidate.close, begin);
        }
    }
    const int end = content.indexOf('>', begin);
    return end - begin <= tag_length_limit ? end : -1;
}

// The library moves the rest of a text for each entity in it.
bool has_bearable_markup(const QByteArray &content)
{
    quint64 moves = 0;
    for (int at = 0; at < content.size();) {
        const int text_end = content.indexOf('<', at);
        const QByteArray text = content.mid(at, text_end < 0 ? -1 : text_end - at);
        moves += static_cast<quint64>(text.count('&')) * static_cast<quint64>(text.size());
        if (moves > entity_moves_limit) {
            return false;
        }
        if (text_end < 0) {
            return true;
        }
        at = end_of_markup(content, text_end);
        if (at < 0) {
            return false;
        }
    }
    return true;
}

bool is_safe_xml(const QByteArray &content, quint64 unfolded_size_limit)
{
    if (!has_bearable_markup(content)) {
        return false;
    }
    QXmlStreamReader reader(as_the_library_reads_it(content));
    int depth = 0;
    quint64 unfolded_size = static_cast<quint64>(content.size());
    while (!reader.atEnd()) {
        switch (reader.readNext()) {
        case QXmlStreamReader::StartElement:
            ++depth;
            unfolded_size += node_size;
            break;
        case QXmlStreamReader::EndElement:
            --depth;
            break;
        case QXmlStreamReader::DTD:
            if (reader.text().contains(QLatin1Char('['))) {
                return false; // markup can hide in a definition
            }
            break;
        default:
            break;
        }
        if (depth > depth_limit || unfolded_size > unfolded_size_limit) {
            return false;
        }
    }
    return !reader.hasError();
}

// --- Binary ----------------------------------------------------------------------------------------------------------

struct object_outline
{
    quint64 content_size = 0; // bytes of a text or of data, unfolded
    quint64 references_at = 0;
    quint64 reference_count = 0;
    quint64 key_count = 0; // of a dictionary: that many of the references, in front
    bool has_zero = false; // of UTF-16 text: at a key with one the library ends the process
};

// The object table of a binary list, read without following anything.
class object_table
{
public:
    object_table(const QByteArray &content, quint64 size_limit) : unfolded_size_limit(size_limit), bytes(content) {}

    bool read_trailer()
    {
        if (bytes.size() < header_size + trailer_size) {
            return false;
        }
        const quint64 trailer = static_cast<quint64>(bytes.size() - trailer_size);
        offset_size = static_cast<unsigned char>(bytes.at(static_cast<int>(trailer) + 6));
        reference_size = static_cast<unsigned char>(bytes.at(static_cast<int>(trailer) + 7));
        if (offset_size < 1 || offset_size > 8 || reference_size < 1 || reference_size > 8) {
            return false;
        }
        object_count = number_at(trailer + 8, 8);
        root = number_at(trailer + 16, 8);
        table_at = number_at(trailer + 24, 8);
        return table_at < trailer && object_count <= (trailer - table_at) / offset_size && root < object_count &&
               object_count <= unfolded_size_limit / node_size;
    }

    std::optional<object_outline> outline_of(quint64 object) const
    {
        const quint64 at = number_at(table_at + object * offset_size, offset_size);
        if (at < header_size || at >= table_at) {
            return std::nullopt;
        }
        const auto marker = static_cast<unsigned char>(bytes.at(static_cast<int>(at)));
        quint64 count = marker & 0x0f;
        quint64 behind = at + 1;
        if (count == 0x0f && marker >= 0x40 && !read_long_count(behind, count)) {
            return std::nullopt;
        }
        object_outline outline;
        switch (marker >> 4) {
        case 0x4: // data
        case 0x5: // ASCII text
            outline.content_size = count;
            return count <= table_at - behind ? std::make_optional(outline) : std::nullopt;
        case 0x6: // UTF-16 text, kept as UTF-8
            outline.content_size = count * 3;
            if (count > (table_at - behind) / 2) {
                return std::nullopt;
            }
            outline.has_zero = has_zero_unit(behind, count);
            return outline;
        case 0xa: // array
        case 0xd: // dictionary: keys, then values
            outline.references_at = behind;
            outline.key_count = (marker >> 4) == 0xd ? count : 0;
            outline.reference_count = outline.key_count + count;
            return outline.reference_count <= (table_at - behind) / reference_size ? std::make_optional(outline)
                                                                                   : std::nullopt;
        default:
            return outline;
        }
    }

    quint64 reference(const object_outline &outline, quint64 index) const
    {
        return number_at(outline.references_at + index * reference_size, reference_size);
    }

    const quint64 unfolded_size_limit;
    quint64 object_count = 0;
    quint64 root = 0;

private:
    quint64 number_at(quint64 at, quint64 size) const
    {
        quint64 value = 0;
        for (quint64 i = 0; i < size; ++i) {
            value = value << 8 | static_cast<unsigned char>(bytes.at(static_cast<int>(at + i)));
        }
        return value;
    }

    bool has_zero_unit(quint64 at, quint64 count) const
    {
        for (const quint64 end = at + 2 * count; at < end; at += 2) {
            if (number_at(at, 2) == 0) {
                return true;
            }
        }
        return false;
    }

    // A count of fifteen and more stands behind the marker as an integer object.
    bool read_long_count(quint64 &behind, quint64 &count) const
    {
        const auto marker = static_cast<unsigned char>(bytes.at(static_cast<int>(behind)));
        const quint64 size = Q_UINT64_C(1) << (marker & 0x0f);
        if ((marker >> 4) != 0x1 || size > 8 || behind + 1 + size > table_at) {
            return false;
        }
        count = number_at(behind + 1, size);
        behind += 1 + size;
        return count <= static_cast<quint64>(bytes.size());
    }

    const QByteArray &bytes;
    quint64 offset_size = 0;
    quint64 reference_size = 0;
    quint64 table_at = 0;
};

// Depth and unfolded size of each object, found from the leaves up without recursion.
class unfolding
{
public:
    explicit unfolding(const object_table &objects) : table(objects), known(objects.object_count) {}

    bool is_within_limits()
    {
        if (!enter(table.root)) {
            return false;
        }
        while (!path.empty()) {
            step &top = path.back();
            if (top.next_reference < top.outline.reference_count) {
                const bool is_key = top.next_reference < top.outline.key_count;
                const quint64 child = table.reference(top.outline, top.next_reference++);
                if (child >= table.object_count || known[child].is_open) {
                    return false;
                }
                if (known[child].depth > 0) {
                    add_to_top(known[child].depth, known[child].size);
                } else if (path.size() >= depth_limit || !enter(child)) {
                    return false;
                }
                if (is_key && known[child].has_zero) {
                    return false;
                }
            } else {
                leave();
            }
            if (!path.empty() &&
                (path.back().depth + path.size() > depth_limit || path.back().size > table.unfolded_size_limit)) {
                return false;
            }
        }
        return true;
    }

private:
    struct measure
    {
        std::size_t depth = 0; // 0: not measured yet
        quint64 size = 0;
        bool is_open = false;
        bool has_zero = false;
    };
    struct step
    {
        quint64 object;
        object_outline outline;
        quint64 next_reference;
        std::size_t depth; // of what stands below
        quint64 size;
    };

    bool enter(quint64 object)
    {
        const std::optional<object_outline> outline = table.outline_of(object);
        if (outline) {
            known[object].is_open = true;
            known[object].has_zero = outline->has_zero;
            path.push_back({object, *outline, 0, 0, node_size + outline->content_size});
        }
        return outline.has_value();
    }

    void leave()
    {
        const step done = path.back();
        path.pop_back();
        known[done.object] = {done.depth + 1, done.size, false, done.outline.has_zero};
        if (!path.empty()) {
            add_to_top(done.depth + 1, done.size);
        }
    }

    void add_to_top(std::size_t depth, quint64 size)
    {
        path.back().depth = std::max(path.back().depth, depth);
        path.back().size += size; // both are below the limit, so this cannot overflow
    }

    const object_table &table;
    std::vector<measure> known;
    std::vector<step> path;
};

bool is_safe_binary(const QByteArray &content, quint64 unfolded_size_limit)
{
    object_table table(content, unfolded_size_limit);
    return table.read_trailer() && unfolding(table).is_within_limits();
}

} // namespace

bool is_binary_property_list(const QByteArray &content)
{
    return content.startsWith("bplist00");
}

bool is_safe_property_list(const QByteArray &content, quint64 unfolded_size_limit)
{
    return is_binary_property_list(content) ? is_safe_binary(content, unfolded_size_limit)
                                            : is_safe_xml(content, unfolded_size_limit);
}
