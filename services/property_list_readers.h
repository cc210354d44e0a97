/// The forms in which the readers of property lists give their values.
#pragma once

#include "services/property_list.h"

#include <QString>

#include <atomic>

/// Out: the label, ":+:" and the value, with no blanks added.
QString labelled(const QString &label, const QString &value);

/// In: a list of texts. Out: the label, ":+:" and the texts, trimmed, joined by ";". Empty for a value that is no list,
/// and when the flag is found raised at one of the elements.
QString labelled_texts_of_array(const property_list_value &array, const QString &label,
                                const std::atomic<bool> &cancel_flag);
