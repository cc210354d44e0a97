// Configuration: accounts, signatures, VIP lists, rules, smart mailboxes, preferences. The driver hands each source
// file to its operation; the operations read nothing yet, so their tables stay empty.
#include "macos/mail_macos.h"

void mail_macos::xcode_extract_allsignature(const QString &, const QString &, const QString &, const QString &,
                                            const QString &)
{
}

void mail_macos::xcode_extract_updatesignature(const QString &, const QString &, const QString &, const QString &) {}

void mail_macos::extract_accounts_for_11_12(const QString &, const QString &, const QString &, int) {}

void mail_macos::extract_xcode_accounts(const QString &, const QString &, const QString &, const QString &) {}

void mail_macos::xcode_extract_vip_list(const QString &, const QString &, const QString &, const QString &) {}

void mail_macos::xcode_extract_vip_list_15(const QString &, const QString &, const QString &, const QString &) {}

void mail_macos::xcode_extract_syncedrule(const QString &, const QString &, const QString &, const QString &) {}

void mail_macos::xcode_extract_smartbox(const QString &, const QString &, const QString &, const QString &) {}

void mail_macos::xcode_extract_preferences(const QString &, const QString &, const QString &, const QString &) {}

void mail_macos::xcode_extract_composing_addressing_prefs(const QString &, const QString &, const QString &,
                                                          const QString &)
{
}
