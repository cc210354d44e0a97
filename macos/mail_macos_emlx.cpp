#include "macos/mail_macos.h"

void mail_macos::extract_emlx_file_location_11(const QString &) {}

void mail_macos::extract_emlx_file_location() {}
