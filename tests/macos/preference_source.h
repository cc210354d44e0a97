/// Evidence of the preference lists: one user a case, and the rows that come out of them.
#pragma once

#include "tests/macos/configuration_source.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <functional>

/// Lists below the home of a user.
constexpr const char *application_list =
    "/Library/Containers/com.apple.mail/Data/Library/Preferences/com.apple.mail.plist";
constexpr const char *shared_list = "/Library/Preferences/com.apple.mail-shared.plist";

/// A value written as JSON; the keys of a dictionary come out sorted.
inline QVariant value_of(const QJsonValue &json)
{
    if (json.isObject()) {
        evidence::property_list_dictionary dictionary;
        const QJsonObject object = json.toObject();
        for (auto entry = object.begin(); entry != object.end(); ++entry) {
            dictionary.append({entry.key(), value_of(entry.value())});
        }
        return dictionary;
    }
    if (json.isArray()) {
        QVariantList list;
        for (const QJsonValue &element : json.toArray()) {
            list.append(value_of(element));
        }
        return list;
    }
    const auto whole = static_cast<qint64>(json.toDouble());
    return json.isDouble() && static_cast<double>(whole) == json.toDouble() ? QVariant(whole) : json.toVariant();
}

/// Keys that give rows where they are missing, with a number that no row tells.
inline const QJsonObject silent_defaults{{QStringLiteral("ReplyQuotesOriginal"), 2},
                                         {QStringLiteral("ConversationViewSortDescending"), 2},
                                         {QStringLiteral("junkMailTrustHeaders"), 2},
                                         {QStringLiteral("junkMailEvaluationAfterRules"), 2}};

/// The list with them at its end.
inline evidence::property_list_dictionary with_silent_defaults(evidence::property_list_dictionary list)
{
    list += value_of(silent_defaults).value<evidence::property_list_dictionary>();
    return list;
}

class preference_source : public configuration_source
{
public:
    explicit preference_source(const char *list) : configuration_source("preferences", list) {}

    QString path_of(const QString &user) const { return tree.home_of(user) + list_name; }
    void write(const QString &user, const QVariant &root,
               evidence::property_list_form form = evidence::property_list_form::binary) const
    {
        evidence::write_property_list_file(path_of(user), root, form);
    }
    std::unique_ptr<host_run> new_run(const QStringList &users = {QStringLiteral("anna")}) const
    {
        auto run = configuration_source::new_run();
        run->users = users;
        return run;
    }
    /// The rows of each user as "key: value", joined by " | ".
    static QHash<QString, QString> rows_by_user(const host_run &run)
    {
        QHash<QString, QString> rows;
        const QRegularExpression form(
            QStringLiteral("  system_user = \"(.*)\"\n  key = \"(.*)\"\n  value = \"(.*)\"\n"));
        for (auto match = form.globalMatch(run.rows(QStringLiteral("preferences"))); match.hasNext();) {
            const QRegularExpressionMatch row = match.next();
            QString &text = rows[row.captured(1)];
            text += text.isEmpty() ? QString() : QStringLiteral(" | ");
            text += row.captured(2) + QLatin1String(": ") + row.captured(3);
        }
        return rows;
    }
    /// Runs the cases of a file, each the list of a user of its own. The keys of `common` stand in each list that does
    /// not say otherwise.
    void check_cases(const char *expected_file, const QJsonObject &common,
                     const std::function<void(const host_run &)> &prepare_result) const
    {
        const auto cases = cases_of(expected_file);
        QStringList users;
        for (const auto &[stored, shown] : cases) {
            users.append(QStringLiteral("case%1").arg(users.size()));
            QJsonObject list = common;
            QJsonParseError error;
            const QJsonObject settings = QJsonDocument::fromJson(stored.toUtf8(), &error).object();
            QVERIFY2(error.error == QJsonParseError::NoError, qPrintable(stored));
            for (auto setting = settings.begin(); setting != settings.end(); ++setting) {
                list.insert(setting.key(), setting.value());
            }
            write(users.last(), value_of(list));
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
