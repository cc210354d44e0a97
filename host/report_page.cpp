#include "host/report_page.h"

#include <QCryptographicHash>
#include <QFile>
#include <QJsonDocument>

namespace {

constexpr const char *style_files[] = {"page.css", "table.css"};
constexpr const char *script_files[] = {"text.js", "pictures.js", "summary.js", "rows.js", "grid.js", "page.js"};

QByteArray resource(const char *name)
{
    QFile file(QStringLiteral(":/report/") + QLatin1String(name));
    const bool is_there = file.open(QIODevice::ReadOnly);
    Q_ASSERT(is_there);
    return is_there ? file.readAll() : QByteArray();
}

template <std::size_t count>
QByteArray joined(const char *const (&names)[count])
{
    QByteArray text("\n");
    for (const char *name : names) {
        text += resource(name);
    }
    return text;
}

QByteArray hash_source(const QByteArray &inline_text)
{
    return "'sha256-" + QCryptographicHash::hash(inline_text, QCryptographicHash::Sha256).toBase64() + '\'';
}

// Nothing but the page's own style and script, known by their hashes: nothing is fetched, and a script or a style that
// evidence might bring does not run.
QByteArray content_policy(const QByteArray &style, const QByteArray &script)
{
    return "default-src 'none'; base-uri 'none'; form-action 'none'; style-src " + hash_source(style) +
           "; script-src " + hash_source(script);
}

} // namespace

report_page::report_page(QFileDevice &file) : output(file)
{
    const QByteArray style = joined(style_files);
    const QByteArray script = joined(script_files);
    const QByteArray data_place("<!--DATA-->");
    QByteArray page = resource("page.html");
    page.replace("<!--POLICY-->", content_policy(style, script));
    page.replace("/*STYLE*/", style);
    page.replace("/*SCRIPT*/", script);
    const int place = page.indexOf(data_place);
    put(page.left(place));
    rest = page.mid(place + data_place.size());
}

void report_page::add_block(const QString &name, const QByteArray &json)
{
    QByteArray harmless = json;
    harmless.replace('<', "\\u003c");
    put("<script type=\"application/json\" data-block=\"" + name.toHtmlEscaped().toUtf8() + "\">" + harmless +
        "</script>\n");
}

void report_page::add_block(const QString &name, const QJsonObject &object)
{
    add_block(name, QJsonDocument(object).toJson(QJsonDocument::Compact));
}

bool report_page::finish()
{
    put(rest);
    return !failed && output.flush();
}

void report_page::put(const QByteArray &bytes)
{
    failed |= output.write(bytes) != bytes.size();
}
