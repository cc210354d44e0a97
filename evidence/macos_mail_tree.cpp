#include "evidence/macos_mail_tree.h"

#include "evidence/files.h"

namespace evidence {

macos_opened_attachment::operator QVariant() const
{
    property_list_dictionary element;
    const property_list_entry entries[] = {{"MessageID", message_id},
                                           {"ModDate", modified},
                                           {"OpenedDate", opened},
                                           {"PartNumber", part_number},
                                           {"Path", path}};
    for (const property_list_entry &entry : entries) {
        if (entry.value.isValid()) {
            element.append(entry);
        }
    }
    return element;
}

macos_mail_tree::macos_mail_tree(const QString &root, sqlite_storage storage)
    : root_path(root.endsWith(QLatin1Char('/')) ? root : root + QLatin1Char('/')), storage(storage)
{
    make_folder(root_path);
}

macos_mail_store &macos_mail_tree::add_store(const QString &user, int generation)
{
    return add_store(user, generation, usual_index_form(generation));
}

macos_mail_store &macos_mail_tree::add_store(const QString &user, int generation, macos_index_form form)
{
    stores.push_back(std::make_unique<macos_mail_store>(store_folder(user, generation), form, storage));
    return *stores.back();
}

accounts_database &macos_mail_tree::accounts(const QString &user, int generation)
{
    const QString path = home_of(user) + QStringLiteral("/Library/Accounts/Accounts%1.sqlite").arg(generation);
    return account_databases.try_emplace(path, path, storage).first->second;
}

QString macos_mail_tree::add_download(const QString &user, const QString &relative_path, const QByteArray &content)
{
    QString path = downloads_folder(user) + QLatin1Char('/') + relative_path;
    make_folder(folder_of(path));
    write_file(path, content);
    return path;
}

QString macos_mail_tree::write_opened_attachments(const QString &user, const QString &file_name,
                                                  const QVariant &root_value, property_list_form form)
{
    QString path = store_folder(user, 2) + QLatin1String("/MailData/") + file_name;
    write_property_list_file(path, root_value, form);
    return path;
}

QString macos_mail_tree::add_file(const QString &relative_path, const QByteArray &content)
{
    QString path = root_path + relative_path;
    make_folder(folder_of(path));
    write_file(path, content);
    return path;
}

QString macos_mail_tree::home_of(const QString &user) const
{
    return root_path + QLatin1String("Users/") + user;
}

QString macos_mail_tree::store_folder(const QString &user, int generation) const
{
    return home_of(user) + QStringLiteral("/Library/Mail/V%1").arg(generation);
}

QString macos_mail_tree::downloads_folder(const QString &user) const
{
    return home_of(user) + QLatin1String("/Library/Containers/com.apple.mail/Data/Library/Mail Downloads");
}

void macos_mail_tree::finish()
{
    for (const std::unique_ptr<macos_mail_store> &store : stores) {
        store->finish();
    }
    for (auto &[path, database] : account_databases) {
        database.finish();
    }
}

} // namespace evidence
