#include "macos/mail_macos.h"

void mail_macos::extract_open_attachment_11_12(const QString &, const QString &) {}

void mail_macos::extract_xcode_open_attachments(const QString &, const QString &, const QString &, const QString &) {}
