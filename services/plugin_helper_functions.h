/// The helper object that the plug-in shares with its extractors: working copies of source files, and the sets of file
/// extensions that tell images, audio and video.
#pragma once

#include <QString>
#include <QStringList>

#include <array>
#include <atomic>

class QWidget;

class plugin_helper_functions
{
public:
    /// Fills the media type sets.
    explicit plugin_helper_functions(QWidget *parent);

    /// Clears the cancel flag.
    void set_essentials() { plugin_helper_cancel_bool = false; }
    void set_cancel_extraction(bool cancel) { plugin_helper_cancel_bool = cancel; }
    /// The folder of the working copies, ending in a slash.
    void set_adhoc_parent_path(const QString &path) { adhoc_parent_path_QString = path; }

    /// Makes a working copy of a source database with its "-shm" and "-wal" files, so that the source is not touched.
    /// Out: the path of the copy, a new one for each call; empty for an empty path. A copy that fails, or that the
    /// cancelling ends, is not reported: there is none then, and it does not open.
    QString get_adhoc_path_for_database(const QString &path);
    /// The same for a file that has no files beside it.
    QString get_adhoc_path_for_regular_file(const QString &path);

    /// Out: whether the name's extension belongs to the set. Video answers for audio too.
    bool check_is_image_by_extn(const QString &name) const;
    bool check_is_audio_by_extn(const QString &name) const;
    bool check_is_video_by_extn(const QString &name) const;

private:
    /// Extensions with their dots, by the first character behind the dot: 0 to 9, then a to z.
    using extension_lists = std::array<QStringList, 36>;

    QString make_working_copy(const QString &path, const char *caller, bool &is_copied);
    void initialize_image_extension_list();
    void initialize_audio_extension_list();
    void initialize_video_extension_list();
    bool is_in_lists(const extension_lists &lists, const QString &name) const;

    std::atomic<bool> plugin_helper_cancel_bool{false};
    QString adhoc_parent_path_QString;
    extension_lists image_extensions;
    extension_lists audio_extensions;
    extension_lists video_extensions;
};
