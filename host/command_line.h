/// The arguments of one command, and the way out for wrong ones.
#pragma once

#include <QCommandLineParser>
#include <QString>
#include <QStringList>

#include <vector>

/// Wrong use or unusable input, thrown by the commands before they have written anything. Holds the one plain sentence
/// that goes to standard error, without a full stop; the program then ends with exit code 2.
class unusable_input
{
public:
    explicit unusable_input(QString wrong) : sentence(std::move(wrong)) {}
    const QString sentence;
};

/// The exit codes of all commands.
enum exit_code
{
    exit_done = 0,
    exit_done_with_failures = 1,
    exit_unusable = 2,
    exit_interrupted = 130,
};

struct option_description
{
    enum kind
    {
        flag,
        value,
        repeatable_value
    };
    const char *name;
    kind takes;
};

class command_arguments
{
public:
    /// In: the command's name, what stands behind it, its options, and the names of its places (such as "SOURCE"), of
    /// which the first `needed` must be given. Throws unusable_input where the arguments do not fit these.
    command_arguments(const QString &command, const QStringList &arguments,
                      const std::vector<option_description> &options, const QStringList &places, int needed);

    bool has(const char *option) const { return parser.isSet(QLatin1String(option)); }
    QString value(const char *option) const { return parser.value(QLatin1String(option)); }
    QStringList values(const char *option) const { return parser.values(QLatin1String(option)); }
    /// The argument at a place; empty where it was not given.
    QString at(int place) const { return parser.positionalArguments().value(place); }

    /// The option's value as a whole number from 0 on; `otherwise` where the option was not given.
    int whole_number(const char *option, int otherwise) const;

private:
    void check_options(const QString &command, const std::vector<option_description> &options) const;
    void check_places(const QString &command, const QStringList &places, int needed) const;

    QCommandLineParser parser;
};
