#include "macos/mail_macos.h"

void mail_macos::extract_messages() {}
