/// The ESE library, its handles and its error objects. All handle types of the library are the same integer type to the
/// compiler; the aliases below are types of their own.
#pragma once

// The header names one that its package does not bring along; the feature has to be known before it can be undone.
#include <libesedb/features.h>
#undef LIBESEDB_HAVE_BFIO
#include <libesedb.h>

#include <memory>

template <auto release>
struct ese_handle_release
{
    void operator()(intptr_t *handle) const { release(&handle, nullptr); }
};

/// Freeing an open file closes it.
using ese_file_handle = std::unique_ptr<libesedb_file_t, ese_handle_release<&libesedb_file_free>>;
using ese_table_handle = std::unique_ptr<libesedb_table_t, ese_handle_release<&libesedb_table_free>>;
using ese_column_handle = std::unique_ptr<libesedb_column_t, ese_handle_release<&libesedb_column_free>>;
using ese_record_handle = std::unique_ptr<libesedb_record_t, ese_handle_release<&libesedb_record_free>>;
using ese_long_value_handle = std::unique_ptr<libesedb_long_value_t, ese_handle_release<&libesedb_long_value_free>>;

/// Takes a call that was handed the error's address. The error object of a failed call is freed at once: the library
/// adds to one that it is handed again, and a file with a million bad values would fill the memory. Out: the call's
/// result, -1 for a failure.
inline int settled(int result, libesedb_error_t *&error)
{
    if (error) {
        libesedb_error_free(&error);
    }
    return result;
}
