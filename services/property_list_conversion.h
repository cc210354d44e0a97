/// Property lists as XML text: by the platform's own tool where it has one, else in the process.
#pragma once

#include <QByteArray>
#include <QEventLoop>
#include <QProcess>
#include <QString>
#include <QTimer>

#include <functional>

/// Out: the property list as the XML text that the platform's tool writes; null for what is no property list, or one
/// that would unfold to more than 1 MiB and sixteen times its size.
QByteArray property_list_as_xml(const QByteArray &content);

/// One run of the platform's tool "plutil" over a file.
class property_list_tool
{
public:
    /// Out: the tool's path, from an absolute folder of PATH; empty where the system has none. What lies below the
    /// root of the source is evidence and never started.
    static QString path(const QString &source_root);

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
    /// An interrupt from the keyboard goes to all processes of the program's group. It cancels the run there; a tool
    /// that it ended would look like one that found no property list.
    class process_of_own_group : public QProcess
    {
    protected:
        void setupChildProcess() override;
    };

    QEventLoop events; // first: it gives a thread that has none what the others need
    QTimer wake_up;
    process_of_own_group process;
};
