/// Writes mail files: a byte count, the mail, a property list about it.
#pragma once

#include "evidence/property_list_file.h"

#include <QByteArray>
#include <QString>
#include <QVector>

namespace evidence {

/// A header field as it stands in the file, in ASCII: see encoded_header for other text.
struct mail_header
{
    QByteArray name;
    QByteArray value;
};

struct mail_attachment
{
    QString file_name;
    QByteArray media_type; ///< such as "image/png"
    QByteArray content;
};

struct emlx_message
{
    QVector<mail_header> headers; ///< without the content's own fields, which follow from the members below
    QString text;                 ///< the plain text; with attachments it becomes the first part of a multipart
    QVector<mail_attachment> attachments;
    bool is_partial = false; ///< the attachments' content lies in files beside the mail: only their headers are written
    property_list_dictionary properties; ///< flags, date-received, ... in their order
};

/// Out: the text as a header value (RFC 2047 where it is not ASCII, folded).
QByteArray encoded_header(const QString &text);

/// Out: the whole file, with LF line ends.
QByteArray emlx_bytes(const emlx_message &message);

} // namespace evidence
