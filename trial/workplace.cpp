#include "trial/workplace.h"

#include "evidence/files.h"

#include <QFile>
#include <QProcess>

#include <cstdlib>

namespace trial {

namespace {

namespace fs = std::filesystem;

// Folders without permissions are given theirs back first.
void remove_tree(const fs::path &path)
{
    if (fs::exists(path)) {
        QProcess::execute(QStringLiteral("chmod"),
                          {QStringLiteral("-R"), QStringLiteral("u+rwX"), QStringLiteral("--"), text_of(path)});
        fs::remove_all(path);
    }
}

} // namespace

workplace::workplace()
{
    std::string pattern = (fs::temp_directory_path() / "mail-trial-XXXXXX").string();
    if (::mkdtemp(pattern.data()) == nullptr) {
        throw evidence::evidence_error(QStringLiteral("No folder can be made for the trial."));
    }
    folder = pattern;
    fs::create_directories(outside() / "folder");
    fs::create_directory(home());
    fs::permissions(home(), fs::perms::owner_all); // alone, or Qt does not take it as a folder of the run time
    evidence::write_file(text_of(outside() / "file"), "what a link of the source must not bring in\n");
    evidence::write_file(text_of(outside() / "folder" / "1.emlx"), "10\nSubject: x\n");
}

workplace::~workplace()
{
    remove_tree(folder);
}

fs::path workplace::database() const
{
    return result() / "Artifacts_Result" / "Mail" / "Mail.sqlite";
}

void workplace::renew_source() const
{
    remove_tree(source());
    if (QProcess::execute(QStringLiteral("cp"),
                          {QStringLiteral("-a"), QStringLiteral("--"), text_of(sample()), text_of(source())}) != 0) {
        throw evidence::evidence_error(QStringLiteral("The sample cannot be copied."));
    }
}

void workplace::remove_result() const
{
    remove_tree(result());
}

QString workplace::strangers() const
{
    QString found;
    for (const fs::directory_entry &entry : fs::directory_iterator(folder)) {
        const fs::path &path = entry.path();
        if (path != sample() && path != source() && path != result() && path != outside() && path != home() &&
            path != scratch() && path != output()) {
            found += text_of(path) + QLatin1Char('\n');
        }
    }
    for (const fs::directory_entry &entry : fs::recursive_directory_iterator(home())) {
        found += text_of(entry.path()) + QLatin1Char('\n');
    }
    return found;
}

QString text_of(const fs::path &path)
{
    return QFile::decodeName(path.c_str());
}

} // namespace trial
