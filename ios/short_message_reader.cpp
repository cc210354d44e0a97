#include "ios/short_message_reader.h"

#include "core/look_up_table.h"

namespace {

constexpr failure_text open_failure{"[mail_message_sms_text]notes.sqlite open ---FAILED--- ", "", nullptr, false, true};

constexpr const char *select_text = "SELECT text FROM message WHERE guid=?";
constexpr failure_text select_text_failure{"[mail_message_sms_text]query_select ---FAILED--- ", "", "", false};
constexpr look_up_table messages_by_guid{"message", "guid,text", "guid"};

} // namespace

short_message_reader::short_message_reader(const operation_log &log, const QString &copy_path,
                                           const std::atomic<bool> &cancel_flag)
    : messages{log, copy_path, cancel_flag}, texts{messages, log, select_text, select_text_failure},
      is_cancelled(cancel_flag)
{
}

bool short_message_reader::open()
{
    if (!is_open && messages.open(open_failure)) {
        make_look_up_fast(messages, messages_by_guid);
        is_open = true;
    }
    return is_open;
}

QString short_message_reader::text_of(const QString &guid)
{
    if (!open() || !texts.execute({guid})) {
        return QString();
    }
    QString text;
    while (texts.next()) {
        text = texts.text("text");
        if (is_cancelled) {
            return QString();
        }
    }
    return text;
}
