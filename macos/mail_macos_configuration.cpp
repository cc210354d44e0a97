// Configuration: accounts, signatures, VIP lists, rules, smart mailboxes, preferences. The driver hands each source
// file to its operation; the operations read nothing yet, so their tables stay empty.
#include "macos/mail_macos.h"

void mail_macos::xcode_extract_preferences(const QString &, const QString &, const QString &, const QString &) {}

void mail_macos::xcode_extract_composing_addressing_prefs(const QString &, const QString &, const QString &,
                                                          const QString &)
{
}
