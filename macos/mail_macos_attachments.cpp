#include "macos/mail_macos.h"

void mail_macos::extract_allattachments_details_11_12() {}

void mail_macos::extract_allattachments_details() {}
