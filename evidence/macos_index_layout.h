/// The forms that the index of a macOS mail store has had, and how rows get into each.
#pragma once

namespace evidence {

/// What tells the indexes apart for a reader. All but the V8 and V9 forms name a message's recipients and attachments
/// by message_id and address_id; those two name them by message and address.
enum class macos_index_form
{
    v2,
    v2_without_in_reply_to,
    v3_to_v7, ///< holds every column that any reader asks for
    v3_to_v7_without_in_reply_to,
    v8, ///< without date_created and in_reply_to
    v9, ///< without these and without snippet
};

/// Out: the form that the store of a generation (2 to 9) usually has.
macos_index_form usual_index_form(int generation);

struct macos_index_layout
{
    macos_index_form form;
    const char *messages; ///< CREATE TABLE
    const char *tables;   ///< CREATE TABLE and INDEX of all others
    /// Its parameters are numbered alike in all forms; columns that a form may lack have the last numbers.
    const char *insert_message;
    const char *insert_recipient;  ///< message, address, type, position
    const char *insert_attachment; ///< message, name
};

const macos_index_layout &layout_of(macos_index_form form);

} // namespace evidence
