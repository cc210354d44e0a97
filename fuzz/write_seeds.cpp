// Usage: fuzz-seeds TARGET FOLDER. Writes the seeds of a target that are no text, where it has any.
#include "evidence/file_metadata_writer.h"
#include "evidence/files.h"
#include "evidence/ios_backup.h"
#include "evidence/property_list_file.h"

#include <QDateTime>
#include <QFile>
#include <QRandomGenerator>
#include <QTemporaryDir>

#include <cstdio>

using evidence::property_list_dictionary;

namespace {

QDateTime date(qint64 seconds)
{
    return QDateTime::fromSecsSinceEpoch(seconds, Qt::UTC);
}

QVariant origins()
{
    return QStringList{QStringLiteral("Anna Müller <anna@uni.example>"), QStringLiteral("Größe, 100% = groß"),
                       QStringLiteral("message:%3C1@uni.example%3E")};
}

void write_list(const QString &path, const QVariant &root)
{
    evidence::write_property_list_file(path, root, evidence::property_list_form::binary);
}

void write_property_lists(const QString &folder)
{
    const property_list_dictionary account{{"AccountName", QStringLiteral("Universität")},
                                           {"EmailAddresses", origins()},
                                           {"PortNumber", 993},
                                           {"Offset", -1.5},
                                           {"SSLEnabled", true},
                                           {"Date", date(1425205230)},
                                           {"Data", QByteArray("\0\1\xff", 3)}};
    write_list(folder + QLatin1String("dictionary"), account);
    write_list(folder + QLatin1String("nested"),
               property_list_dictionary{{"MailAccounts", QVariantList{account, account, QVariantList{}}},
                                        {"Empty", property_list_dictionary{}},
                                        {"Long", QString(20, QLatin1Char('x'))}});
}

void write_attribute_values(const QString &folder)
{
    const struct
    {
        const char *name;
        QVariant value;
    } values[] = {
        {"text", QStringLiteral("Größe \"A\"")},
        {"number", 1234},
        {"real", 48.25},
        {"true", true},
        {"date", date(1425205230)},
        {"texts", origins()},
        {"dates", QVariantList{date(1425205230), date(-1), date(100000000)}},
    };
    for (const auto &each : values) {
        write_list(folder + QLatin1String(each.name), each.value);
    }
}

void write_apple_double(const QString &folder)
{
    const QString file = folder + QLatin1String("file");
    evidence::write_file(file, QByteArray());
    evidence::write_file_metadata(file,
                                  {{"kMDItemWhereFroms", origins()},
                                   {"kMDItemLastUsedDate", date(1425205230)},
                                   {"kMDItemUsedDates", QVariantList{date(1425160800), date(1425205230)}},
                                   {"kMDItemFSNodeCount", 3},
                                   {"kMDItemOriginSubject", QStringLiteral("Größe")}},
                                  evidence::metadata_place::apple_double);
    QFile::remove(file);
}

void write_backup_manifests(const QString &folder)
{
    for (const auto layout :
         {evidence::ios_backup_layout::manifest_database, evidence::ios_backup_layout::manifest_mbdb}) {
        const QTemporaryDir root;
        evidence::ios_backup backup(root.path(), {layout});
        backup.add("HomeDomain/Library/Mail/Recents", "recents");
        backup.add("HomeDomain/Library/SMS/sms.db", "messages");
        backup.finish();
        for (const QLatin1String name : {QLatin1String("Manifest.db"), QLatin1String("Manifest.mbdb")}) {
            QFile::rename(root.filePath(name), folder + name);
        }
    }
}

// Changes to a sound file, of each size of pages: what a fuzzer begins with nothing of takes it long to come to.
void write_ese_changes(const QString &folder)
{
    constexpr int file_count = 48;
    constexpr int largest_change_count = 12;
    QRandomGenerator random(1);
    for (int number = 0; number < file_count; ++number) {
        QByteArray changes(1 + 3 * random.bounded(largest_change_count), '\0');
        for (char &byte : changes) {
            byte = static_cast<char>(random.bounded(256));
        }
        evidence::write_file(folder + QString::number(number), changes);
    }
}

constexpr struct
{
    const char *target;
    void (*write)(const QString &folder);
} seeds[] = {
    {"apple_double", &write_apple_double},        {"attribute_values", &write_attribute_values},
    {"backup_manifest", &write_backup_manifests}, {"ese_file", &write_ese_changes},
    {"ese_long_values", &write_ese_changes},      {"property_list", &write_property_lists},
};

} // namespace

int main(int argument_count, char **arguments)
{
    if (argument_count != 3) {
        std::fputs("usage: fuzz-seeds TARGET FOLDER\n", stderr);
        return 2;
    }
    const QString folder = QString::fromUtf8(arguments[2]) + QLatin1Char('/');
    try {
        evidence::make_folder(folder);
        for (const auto &each : seeds) {
            if (qstrcmp(each.target, arguments[1]) == 0) {
                each.write(folder);
            }
        }
    } catch (const evidence::evidence_error &error) {
        std::fprintf(stderr, "%s\n", error.what());
        return 2;
    }
    return 0;
}
