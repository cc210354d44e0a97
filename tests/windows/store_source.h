/// Two Windows profiles, anna's and ben's, whose stores hold the cases of the tables that store.vol fills. The rows to
/// expect are in the files of the tables' names in expected/.
#pragma once

#include "evidence/windows_profile.h"
#include "tests/windows/winos_run.h"

inline constexpr const char *store_tables = "appointments all_attachments messages contacts call_history";

inline void write_recipients_of_anna(evidence::windows_store &store)
{
    using evidence::filetime_of;
    const auto add = [&store](qint64 key, qint64 kind, qint64 time, const char *address) {
        store.add(evidence::windows_recipient{key, kind, filetime_of(time), utf8(address)});
    };
    add(10, 0, 1600000000, "anna@example.org");
    add(10, 1, 1600000000, "ben@example.org");
    add(10, 2, 1600000000, "cc@example.org");
    add(20, 1, 1600000100, "first@example.org");
    add(20, 1, 1600000100, "second@example.org");
    add(20, 0, 1600000100, "anna@example.org");
    add(30, 0, 1600000200, "alone@example.org");
    add(40, 1, 1600000000, "other-key@example.org");
    add(10, 1, 1600000300, "later@example.org"); // an attachment's key at another time
}

inline void write_messages_of_anna(evidence::windows_store &store)
{
    using evidence::filetime_of;
    const evidence::windows_message full{utf8(" \tHello\nthere \r\n"),
                                         utf8("anna@example.org"),
                                         utf8("Änna"),
                                         utf8("RE: "),
                                         utf8("Plans \U0001F600"),
                                         filetime_of(1600000000),
                                         filetime_of(1599999990) + 9999999};
    store.add(full);

    evidence::windows_message same_time = full; // no row
    same_time.subject = utf8("Plans again");
    store.add(same_time);

    evidence::windows_message from_senders_alone; // a row without receivers
    from_senders_alone.time = filetime_of(1600000200);
    store.add(from_senders_alone);

    evidence::windows_message without_recipients; // no row
    without_recipients.time = filetime_of(1600000400);
    store.add(without_recipients);

    evidence::windows_message received;
    received.subject = utf8("Offer");
    received.time = filetime_of(1600000100);
    received.date_sent = -5; // no FILETIME
    store.add(received);
}

inline void write_attachments_of_anna(evidence::windows_store &store)
{
    const auto add = [&store](const char *name, std::optional<qint64> size, const QString &suffix,
                              std::optional<bool> is_received, qint64 key) {
        store.add(evidence::windows_attachment{utf8(name), size, suffix, is_received, key});
    };
    add("sent.pdf", 1234, utf8(".pdf"), false, 10);
    add("received.jpg", 10, utf8(".jpg"), true, 20);
    add("sent.pdf", 99, utf8(".pdf"), false, 20); // the name of a row: none
    add("sent.pdf", 5, utf8(".pdf"), true, 10);   // but one of the other pass
    add("orphan.txt", std::nullopt, QString(), true, 999);
    add("no direction", 3, QString(), std::nullopt, 30); // an absent boolean reads as "false"
}

inline void write_contacts_of_anna(evidence::windows_store &store)
{
    const evidence::windows_contact full{utf8("Anna Smith"), utf8("Anna"),         utf8("Smith"),  utf8("Sales"),
                                         utf8("anna"),       utf8("@example.org"), utf8("+49 2"),  utf8("+49 1"),
                                         utf8("Street 1"),   utf8("10969"),        utf8("Berlin"), true,
                                         "\x01\x02"};
    store.add(full);

    evidence::windows_contact unlisted = full; // no row, as the next
    unlisted.is_listed = false;
    store.add(unlisted);
    unlisted.is_listed.reset();
    store.add(unlisted);

    evidence::windows_contact bare;
    bare.is_listed = true;
    store.add(bare);
}

inline void write_stores(const QString &root)
{
    using evidence::filetime_of;
    evidence::windows_profile anna(root, utf8("anna"));
    evidence::windows_store &store = anna.store();
    store.add(evidence::windows_appointment{utf8("Review"), utf8("Room 1"), utf8("W. Europe Standard Time"), 15,
                                            filetime_of(1600000000), utf8("anna@example.org")});
    store.add(evidence::windows_appointment{});
    write_recipients_of_anna(store);
    write_messages_of_anna(store);
    write_attachments_of_anna(store);
    write_contacts_of_anna(store);
    store.add(evidence::windows_call{filetime_of(1600000000), filetime_of(1600000060), filetime_of(1600000001),
                                     filetime_of(-1), utf8("Berlin"), utf8("Ben"), utf8("+49 3")});
    store.add(evidence::windows_call{});
    anna.finish();

    // Names and times of anna's store once more: each store counts by itself.
    evidence::windows_profile ben(root, utf8("ben"));
    evidence::windows_message message;
    message.subject = utf8("Plans");
    message.time = filetime_of(1600000000);
    ben.store().add(message);
    ben.store().add(evidence::windows_recipient{5, 3, filetime_of(1600000000), utf8("anna@example.org")});
    ben.store().add(evidence::windows_attachment{utf8("sent.pdf"), 7, utf8(".pdf"), false, 6});
    ben.finish();
}
