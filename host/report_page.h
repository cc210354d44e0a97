/// The page that a report is: one file with its own style and script, and the data as blocks that no browser runs.
#pragma once

#include <QByteArray>
#include <QFileDevice>
#include <QJsonObject>
#include <QString>

/// Written from the front to the end. What has failed is told by finish().
class report_page
{
public:
    /// In: a file open for writing. Writes the page up to its data.
    explicit report_page(QFileDevice &file);

    /// A block of data for the page's script. In: what the script knows it by; JSON in UTF-8, whose "<" are written as
    /// escapes, so that no text of the evidence can end the block or begin an element.
    void add_block(const QString &name, const QByteArray &json);
    void add_block(const QString &name, const QJsonObject &object);

    /// Writes the rest. Out: whether all of the page was written.
    bool finish();

private:
    void put(const QByteArray &bytes);

    QFileDevice &output;
    QByteArray rest; // of the template, behind the data
    bool failed = false;
};
