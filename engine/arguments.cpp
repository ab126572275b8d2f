#include "arguments.h"

#include <QCoreApplication>
#include <QFileInfo>

namespace {

class ArgumentParser
{
    Q_DECLARE_TR_FUNCTIONS(Arguments)

public:
    explicit ArgumentParser(const QStringList &arguments)
        : m_left(arguments)
    {
    }

    Arguments parse()
    {
        while (!m_left.isEmpty() && m_parsed.error.isEmpty()) {
            const QString argument = m_left.takeFirst();
            if (argument.startsWith(QLatin1Char('-'))) {
                readOption(optionName(argument));
            } else {
                readDocument(argument);
            }
        }
        const bool isAsked = m_parsed.version || m_parsed.build;
        if (m_parsed.error.isEmpty() && m_parsed.commandLine && m_parsed.document.isEmpty() &&
            !isAsked) {
            m_parsed.error = tr("No .%1 file specified.").arg(documentSuffix());
        }
        return m_parsed;
    }

private:
    static QString documentSuffix() { return QStringLiteral("transform"); }

    static QString optionName(const QString &argument)
    {
        return argument.toLower().mid(argument.startsWith(QLatin1String("--")) ? 2 : 1);
    }

    void readOption(const QString &name)
    {
        if (name == QLatin1String("cli")) {
            m_parsed.commandLine = true;
        } else if (name == QLatin1String("verbose")) {
            m_parsed.verbose = true;
        } else if (name == QLatin1String("new_window")) {
            m_parsed.newWindow = true;
        } else if (name == QLatin1String("version")) {
            m_parsed.version = true;
        } else if (name == QLatin1String("build")) {
            m_parsed.build = true;
        } else if (name == QLatin1String("log")) {
            const QString path = valueOf(name);
            if (m_parsed.error.isEmpty()) {
                m_parsed.logPath = path;
            }
        } else if (name == QLatin1String("file")) {
            m_parsed.files.append(valueOf(name));
        } else {
            m_parsed.error = tr("Unrecognized argument: %1").arg(name);
        }
    }

    QString valueOf(const QString &name)
    {
        if (m_left.isEmpty()) {
            m_parsed.error = tr("No value following %1 argument").arg(name);
            return {};
        }
        return m_left.takeFirst();
    }

    void readDocument(const QString &argument)
    {
        const QFileInfo file(argument);
        if (!file.exists()) {
            m_parsed.error = tr("'%1' not found").arg(argument);
        } else if (file.suffix().compare(documentSuffix(), Qt::CaseInsensitive) != 0) {
            m_parsed.error =
                tr("Unrecognized file suffix '%1' in '%2'").arg(file.suffix(), argument);
        } else {
            m_parsed.document = argument;
        }
    }

    QStringList m_left;
    Arguments m_parsed;
};

} // namespace

Arguments Arguments::parsed(const QStringList &arguments)
{
    return ArgumentParser(arguments).parse();
}
