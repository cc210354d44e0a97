/// Mail files of sample trees: 2 to 60 KB, small ones more often, with the header forms of real mails.
#pragma once

#include "evidence/emlx_file.h"
#include "evidence/sample_random.h"
#include "evidence/sample_text.h"

#include <array>
#include <vector>

namespace evidence {

/// What the index and the file of a mail say alike.
struct sample_mail
{
    sample_person sender;
    std::array<QVector<sample_person>, 3> recipients; ///< To, Cc, Bcc
    QString subject;
    qint64 date = 0; ///< Unix seconds
    qint64 message_id = 0;
    bool has_reply_to = false;
    QVector<mail_attachment> attachments; ///< their names differ
};

class sample_emlx
{
public:
    /// In: where the choices come from; it must outlive the object.
    explicit sample_emlx(sample_random &random);

    QVector<mail_attachment> attachments(int count);
    /// Some mails with attachments become partial ones.
    emlx_message message(const sample_mail &mail);

private:
    QByteArray address_list(const QVector<sample_person> &people);
    QString body(int bytes);

    struct body_line
    {
        QString text;
        int bytes; ///< in the file
    };

    sample_random &random;
    std::vector<body_line> lines; ///< what bodies are made of: writing each word by word would take most of the time
};

} // namespace evidence
