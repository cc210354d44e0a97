#include "evidence/windows_mail_store.h"

namespace evidence {

namespace {

// Texts are tagged, numbers fixed, as the application has them.
std::vector<ese_column> columns_of(std::initializer_list<std::pair<const char *, ese_type>> described)
{
    std::vector<ese_column> columns;
    for (const auto &[name, type] : described) {
        ese_column column;
        column.name = name;
        column.type = type;
        columns.push_back(column);
    }
    return columns;
}

std::vector<ese_column> attachment_columns()
{
    return columns_of({{"Id", ese_type::signed32},
                       {"Size", ese_type::unsigned32},
                       {"FileName", ese_type::long_text},
                       {"ContentType", ese_type::text},
                       {"BodyFile", ese_type::long_text},
                       {"ContentId", ese_type::long_text},
                       {"ContentLocation", ese_type::long_text},
                       {"InstanceNumber", ese_type::unsigned32}});
}

std::vector<ese_column> conversation_columns()
{
    return columns_of({{"Id", ese_type::signed32},
                       {"LatestMessageTime", ese_type::signed64},
                       {"LatestReceivedTime", ese_type::signed64},
                       {"LatestSender", ese_type::long_text},
                       {"LatestSenderEmail", ese_type::long_text},
                       {"LatestSenderName", ese_type::long_text},
                       {"NormalizedSubject", ese_type::long_text},
                       {"TotalMessageCount", ese_type::unsigned32},
                       {"Importance", ese_type::unsigned32}});
}

std::vector<ese_column> message_columns()
{
    return columns_of({{"Id", ese_type::signed32},
                       {"ConversationServerId", ese_type::text},
                       {"DateReceived", ese_type::signed64},
                       {"DateLastModified", ese_type::signed64},
                       {"EmlFile", ese_type::long_text},
                       {"From", ese_type::long_text},
                       {"FromEmail", ese_type::long_text},
                       {"FromName", ese_type::long_text},
                       {"GmailImapUniqueMessageId", ese_type::text},
                       {"ImapUID", ese_type::unsigned32},
                       {"LastModifiedBodyType", ese_type::unsigned32},
                       {"MimeMessageId", ese_type::long_text},
                       {"PreviewText", ese_type::long_text},
                       {"ReplyTo", ese_type::long_text},
                       {"Subject", ese_type::long_text},
                       {"To", ese_type::long_text}});
}

ese_value value_of(const QString &text)
{
    return text.isNull() ? ese_value() : ese_value::text(text);
}

ese_value value_of(const std::optional<qint64> &number)
{
    return number ? ese_value::number(*number) : ese_value();
}

} // namespace

windows_mail_store::windows_mail_store(const QString &path, const ese_file_options &options)
    : file(path, options), attachments(file.add_table("MailAttachment", attachment_columns())),
      conversations(file.add_table("MailConversation", conversation_columns())),
      messages(file.add_table("MailMessage", message_columns()))
{
}

template <typename... values>
void windows_mail_store::add_record(ese_table &table, const values &...fields)
{
    table.add_record({ese_value::number(++last_id), value_of(fields)...});
}

void windows_mail_store::add(const windows_mail_attachment &item)
{
    add_record(attachments, item.size, item.file_name, item.content_type, item.body_file, item.content_id,
               item.content_location, item.instance_number);
}

void windows_mail_store::add(const windows_mail_conversation &item)
{
    add_record(conversations, item.latest_message_time, item.latest_received_time, item.latest_sender,
               item.latest_sender_email, item.latest_sender_name, item.normalized_subject, item.total_message_count,
               item.importance);
}

void windows_mail_store::add(const windows_mail_message &item)
{
    add_record(messages, item.conversation_server_id, item.date_received, item.date_last_modified, item.eml_file,
               item.from, item.from_email, item.from_name, item.gmail_message_id, item.imap_uid,
               item.last_modified_body_type, item.mime_message_id, item.preview_text, item.reply_to, item.subject,
               item.to);
}

} // namespace evidence
