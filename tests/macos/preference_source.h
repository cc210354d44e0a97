/// Evidence of the preference lists: one user a case, and the rows that come out of them.
#pragma once

#include "tests/macos/configuration_source.h"

/// Lists below the home of a user.
constexpr const char *application_list =
    "/Library/Containers/com.apple.mail/Data/Library/Preferences/com.apple.mail.plist";
constexpr const char *shared_list = "/Library/Preferences/com.apple.mail-shared.plist";

/// Keys that give rows where they are missing, with a number that no row tells.
constexpr const char *silent_defaults =
    R"({"ReplyQuotesOriginal": 2, "ConversationViewSortDescending": 2, "junkMailTrustHeaders": 2,
        "junkMailEvaluationAfterRules": 2})";

/// The list with those of them at its end that it does not have.
inline QVariant with_silent_defaults(const QVariant &list)
{
    auto result = list.value<evidence::property_list_dictionary>();
    const auto defaults = json(silent_defaults).value<evidence::property_list_dictionary>();
    for (const evidence::property_list_entry &entry : defaults) {
        const auto is_same = [&entry](const evidence::property_list_entry &other) { return other.key == entry.key; };
        if (std::none_of(result.begin(), result.end(), is_same)) {
            result.append(entry);
        }
    }
    return result;
}

class preference_source : public configuration_source
{
public:
    explicit preference_source(const char *list) : configuration_source("preferences", list) {}

    void write(const QVariant &root, const QString &user = text("anna")) const
    {
        write_list(tree.home_of(user) + list_name, root);
    }
    std::unique_ptr<host_run> new_run(const QStringList &users = texts({"anna"})) const
    {
        return ::new_run(tree, {table}, users);
    }
    std::unique_ptr<host_run> run() const { return whole_run(tree, {table}); }
    /// The rows of each user as "key: value", joined by " | ".
    static QHash<QString, QString> rows_by_user(const host_run &run)
    {
        QHash<QString, QString> rows;
        with_result_database(run, [&rows](QSqlQuery &query) {
            QVERIFY(query.exec(text("select system_user, key || ': ' || value from preferences order by INT")));
            while (query.next()) {
                QString &line = rows[query.value(0).toString()];
                line += (line.isEmpty() ? QString() : text(" | ")) + query.value(1).toString();
            }
        });
        return rows;
    }
    /// Runs the cases of a file, each the list of a user of its own.
    void check_cases(const char *expected_file, QVariant (*list_of)(const QVariant &stored),
                     const std::function<void(const host_run &)> &prepare_result) const
    {
        const auto cases = cases_of(expected_file);
        QStringList users;
        for (const auto &[stored, shown] : cases) {
            users.append(QStringLiteral("case%1").arg(users.size()));
            write(list_of(json(stored.toUtf8())), users.last());
        }
        const auto run = new_run(users);
        run->prepare();
        prepare_result(*run);
        run->extract();
        const QHash<QString, QString> rows = rows_by_user(*run);
        QString differences;
        for (int i = 0; i < cases.size(); ++i) {
            const QString actual = rows.value(users.at(i));
            if (actual != cases.at(i).second) {
                differences += cases.at(i).first + QLatin1String("\n- ") + cases.at(i).second + QLatin1String("\n+ ") +
                               actual + QLatin1Char('\n');
            }
        }
        QVERIFY2(differences.isEmpty() && !cases.isEmpty(), qPrintable(differences));
    }
};
