/// Property lists as XML text: by the platform's own tool where it has one, else in the process.
#pragma once

#include <QByteArray>
#include <QEventLoop>
#include <QProcess>
#include <QString>
#include <QTimer>

#include <functional>

/// Out: the property list as the XML text that the platform's tool writes; null for what is no property list, or one
/// that would unfold to many times its size.
QByteArray property_list_as_xml(const QByteArray &content);

/// One run of the platform's tool "plutil" over a file.
class property_list_tool
{
public:
    /// Out: the tool's path; empty where the system has none.
    static QString path();

    /// Starts the tool. `finished` is called with its exit code once it is over, however it ended, from within
    /// turn_event_loop or at once; a tool that cannot be started is over.
    property_list_tool(const QString &program, const QString &list_path, const QString &xml_path,
                       const std::function<void(int)> &finished);
    /// Ends the tool, if it runs still.
    ~property_list_tool();
    property_list_tool(const property_list_tool &) = delete;
    property_list_tool &operator=(const property_list_tool &) = delete;

    /// Waits a few milliseconds at most and handles what has happened meanwhile.
    void turn_event_loop();

private:
    QEventLoop events; // first: it gives a thread that has none what the others need
    QTimer wake_up;
    QProcess process;
};
