/// The folders of a trial: everything that it may touch lies in one, so that whatever appears elsewhere in it shows.
#pragma once

#include <QString>

#include <filesystem>

namespace trial {

class workplace
{
public:
    /// Makes a new folder in the system's folder for temporary files.
    workplace();
    /// Removes it, whatever permissions stand in the way.
    ~workplace();
    workplace(const workplace &) = delete;
    workplace &operator=(const workplace &) = delete;

    std::filesystem::path sample() const { return folder / "sample"; } ///< as the evidence library writes it
    std::filesystem::path source() const { return folder / "source"; } ///< what the extraction reads
    std::filesystem::path result() const { return folder / "result"; }
    std::filesystem::path database() const;
    std::filesystem::path outside() const { return folder / "outside"; } ///< what links of a source may lead to
    std::filesystem::path home() const { return folder / "home"; }       ///< of the extraction; stays empty
    std::filesystem::path scratch() const { return folder / "scratch"; } ///< the trial's own
    std::filesystem::path output() const { return folder / "output"; }   ///< what the extraction prints

    /// Makes the source anew from the sample, times and extended attributes included.
    void renew_source() const;
    void remove_result() const;
    /// Out: what stands in the workplace and does not belong there, one a line.
    QString strangers() const;

private:
    std::filesystem::path folder;
};

QString text_of(const std::filesystem::path &path);

} // namespace trial
