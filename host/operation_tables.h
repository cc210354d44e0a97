/// Which result tables lack rows when an operation of the plug-in has logged a failure.
#pragma once

#include <QString>
#include <QStringList>

/// In: the operation as the log names it, "mail_macos::extract_messages". Out: the tables; empty for one that is no
/// table's own: then any may lack rows.
QStringList tables_filled_by(const QString &operation);
