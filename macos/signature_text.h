/// The text of a signature file (".mailsignature"), a MIME document with the signature as HTML in its body.
#pragma once

#include "services/html_text.h"

#include <QByteArray>

#include <atomic>
#include <optional>

/// In: the content of the file. Out: its body as plain text, trimmed; without "<body" that of the whole file, headers
/// included. Of quoted-printable only the soft line breaks are resolved. None when the extraction is cancelled.
std::optional<html_text> plain_text_of_signature(const QByteArray &content, const std::atomic<bool> &cancel_flag);
