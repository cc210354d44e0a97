#include "host/command_line.h"

command_arguments::command_arguments(const QString &command, const QStringList &arguments,
                                     const std::vector<option_description> &options, const QStringList &places,
                                     int needed)
{
    for (const option_description &option : options) {
        QCommandLineOption parsed{QString::fromLatin1(option.name)};
        if (option.takes != option_description::flag) {
            parsed.setValueName(QStringLiteral("value"));
        }
        parser.addOption(parsed);
    }
    // The parser takes the first entry for the program's name.
    if (!parser.parse(QStringList{command} + arguments)) {
        check_options(command, options);
        QString reason = parser.errorText();
        reason.chop(1); // its full stop
        reason[0] = reason.at(0).toLower();
        throw unusable_input{QStringLiteral("%1 (see mail-extract %2 --help)").arg(reason, command)};
    }
    for (const option_description &option : options) {
        if (option.takes == option_description::value && values(option.name).size() > 1) {
            throw unusable_input{
                QStringLiteral("--%1 is given twice, but takes one value").arg(QLatin1String(option.name))};
        }
    }
    check_places(command, places, needed);
}

void command_arguments::check_options(const QString &command, const std::vector<option_description> &options) const
{
    if (parser.unknownOptionNames().isEmpty()) {
        return;
    }
    QStringList known;
    for (const option_description &option : options) {
        known += QStringLiteral("--") + QLatin1String(option.name);
    }
    const QString unknown = parser.unknownOptionNames().constFirst();
    throw unusable_input{known.isEmpty()
                             ? QStringLiteral("unknown option \"%1\": \"%2\" takes no options").arg(unknown, command)
                             : QStringLiteral("unknown option \"%1\": the options of \"%2\" are %3")
                                   .arg(unknown, command, known.join(QStringLiteral(", ")))};
}

void command_arguments::check_places(const QString &command, const QStringList &places, int needed) const
{
    const QStringList given = parser.positionalArguments();
    if (given.size() < needed) {
        throw unusable_input{
            QStringLiteral("\"%1\" needs %2 (see mail-extract %1 --help)").arg(command, places.at(given.size()))};
    }
    if (given.size() > places.size()) {
        throw unusable_input{QStringLiteral("\"%1\" is one argument too many for \"%2\" (see mail-extract %2 --help)")
                                 .arg(given.at(places.size()), command)};
    }
}

int command_arguments::whole_number(const char *option, int otherwise) const
{
    if (!has(option)) {
        return otherwise;
    }
    bool is_number = false;
    const int number = value(option).toInt(&is_number);
    if (!is_number || number < 0) {
        throw unusable_input{QStringLiteral("--%1 takes a whole number from 0 to 2147483647, not \"%2\"")
                                 .arg(QLatin1String(option), value(option))};
    }
    return number;
}
