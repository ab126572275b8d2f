#include "outputoptions.h"
#include "outputtesttools.h"
#include "outputwriter.h"
#include "testsupport.h"
#include "textoutput.h"

#include <QFileInfo>
#include <QTemporaryDir>

using namespace OutputTest;

Q_DECLARE_METATYPE(WriteMode)
Q_DECLARE_METATYPE(FileType)
Q_DECLARE_METATYPE(Delimiter)

class TestOutputWriter : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        m_folder = std::make_unique<QTemporaryDir>();
        m_path = inFolder("a.csv");
        m_options = OutputOptions();
        m_options.path = m_path;
        m_options.lineEnding = LineEnding::Unix;
        m_context = OutputContext();
        m_messages.clear();
    }

    void writeModes_data()
    {
        QTest::addColumn<WriteMode>("mode");
        QTest::addColumn<QByteArray>("old");
        QTest::addColumn<QByteArray>("expected");
        QTest::addColumn<QString>("information");
        QTest::addColumn<QString>("warning");
        const QByteArray none("<no file>");
        const auto addRow = [](const char *tag, WriteMode mode, const QByteArray &old,
                               const QByteArray &expected, const char *information,
                               const char *warning) {
            QTest::newRow(tag) << mode << old << expected << QString::fromLatin1(information)
                               << QString::fromLatin1(warning);
        };
        addRow("disabled", WriteMode::Disabled, "old", "old", "Write mode='Disabled'", "");
        addRow("overwrite", WriteMode::Overwrite, "old", "h\n1\n", "Written to '%1'", "");
        addRow("overwrite nothing", WriteMode::Overwrite, none, "h\n1\n", "Written to '%1'", "");
        addRow("append", WriteMode::Append, "old\n", "old\nh\n1\n", "Written to '%1'", "");
        addRow("append to nothing", WriteMode::Append, none, "h\n1\n", "Written to '%1'", "");
        addRow("new", WriteMode::New, none, "h\n1\n", "Written to '%1'", "");
        addRow("new, but there", WriteMode::New, "old", "old", "",
               "Write mode='New' and '%1' already exists");
    }

    void writeModes()
    {
        QFETCH(WriteMode, mode);
        QFETCH(QByteArray, old);
        QFETCH(QByteArray, expected);
        QFETCH(QString, information);
        QFETCH(QString, warning);
        if (old != "<no file>") {
            makeFile(m_path, old);
        }
        m_options.writeMode = mode;
        write(smallTable());
        QCOMPARE(contentOf(m_path), expected);
        QCOMPARE(m_messages.information.join(QLatin1Char('|')), withPath(information));
        QCOMPARE(m_messages.warnings.join(QLatin1Char('|')), withPath(warning));
        QVERIFY(!m_messages.failed);
    }

    void refuses_data()
    {
        QTest::addColumn<QString>("path");
        QTest::addColumn<QString>("warning");
        QTest::addColumn<bool>("fails");
        QTest::newRow("no path") << QString() << QStringLiteral("No file name set") << true;
        QTest::newRow("relative, never saved")
            << QStringLiteral("a.csv")
            << QStringLiteral("Relative file path for 'a.csv', but .transform not saved for it to "
                              "be relative to.")
            << false;
        QTest::newRow("blocked")
            << QStringLiteral("%1/a.ExE")
            << QStringLiteral("The extension for this file is blocked in 'Preferences>Output "
                              "Extensions':\n%1/a.ExE")
            << false;
        QTest::newRow("no name") << QStringLiteral("%1/b/") << QStringLiteral("No file name")
                                 << true;
        QTest::newRow("folder") << QStringLiteral("%1") << QStringLiteral("is a folder") << true;
        QTest::newRow("full device") << QStringLiteral("/dev/full")
                                     << QStringLiteral("Unable to write to '/dev/full': ") << true;
    }

    void refuses()
    {
        QFETCH(QString, path);
        QFETCH(QString, warning);
        QFETCH(bool, fails);
        m_context.blockedExtensions = QStringList{QStringLiteral("exe"), QStringLiteral("*")};
        const QString folder = m_folder->path();
        m_options.path = path.contains(QLatin1Char('%')) ? path.arg(folder) : path;
        write(smallTable());
        QCOMPARE(m_messages.failed, fails);
        QCOMPARE(m_messages.warnings.size(), 1);
        QVERIFY2(m_messages.warnings.first().contains(
                     warning.contains(QLatin1Char('%')) ? warning.arg(folder) : warning),
                 qPrintable(m_messages.warnings.first()));
        QCOMPARE(namesIn(folder), QStringList());
    }

    void relativePathsStartAtDocument()
    {
        m_context.documentFolder = m_folder->path();
        m_options.path = QStringLiteral("./sub/../a.csv");
        write(smallTable());
        QCOMPARE(contentOf(m_path), QByteArray("h\n1\n"));
        QCOMPARE(m_messages.information, QStringList{withPath(QStringLiteral("Written to '%1'"))});
    }

    void notesExtensionsOfOtherTypes_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<bool>("noted");
        QTest::newRow("csv") << QStringLiteral("a.csv") << false;
        QTest::newRow("CSV") << QStringLiteral("a.CSV") << false;
        QTest::newRow("unknown") << QStringLiteral("a.tsv") << false;
        QTest::newRow("none") << QStringLiteral("a") << false;
        QTest::newRow("JSON") << QStringLiteral("a.b.JSON") << true;
    }

    void notesExtensionsOfOtherTypes()
    {
        QFETCH(QString, name);
        QFETCH(bool, noted);
        m_options.path = inFolder(qPrintable(name));
        write(smallTable());
        QStringList expected{QStringLiteral("Written to '%1'").arg(m_options.path)};
        if (noted) {
            expected.prepend(
                QStringLiteral("'%1' extension is 'JSON' but file type is Delimited text.")
                    .arg(m_options.path));
        }
        QCOMPARE(m_messages.information, expected);
        QCOMPARE(contentOf(m_options.path), QByteArray("h\n1\n"));
    }

    void notesAutomaticLineEndings()
    {
        m_options.lineEnding = LineEnding::Automatic;
        write(smallTable());
        QCOMPARE(m_messages.information.first(),
                 QStringLiteral("Line endings=Automatic sets line endings as Windows (CRLF). Set "
                                "'Line endings' option to change.\n"));
        QCOMPARE(contentOf(m_path), QByteArray("h\r\n1\r\n"));
    }

    void outputThatIsAlsoInput_data()
    {
        QTest::addColumn<WriteMode>("mode");
        QTest::addColumn<QByteArray>("expected");
        QTest::newRow("overwrite") << WriteMode::Overwrite << QByteArray("h\n1\n");
        QTest::newRow("append") << WriteMode::Append << QByteArray("old\n");
    }

    void outputThatIsAlsoInput()
    {
        QFETCH(WriteMode, mode);
        QFETCH(QByteArray, expected);
        makeFile(m_path, "old\n");
        m_context.inputPaths = QStringList{QFileInfo(m_path).canonicalFilePath()};
        const QString link = inFolder("link.csv");
        QVERIFY(QFile::link(m_path, link));
        m_options.path = link;
        m_options.writeMode = mode;
        write(smallTable());
        QCOMPARE(contentOf(m_path), expected);
        QCOMPARE(m_messages.failed, mode == WriteMode::Append);
        const QStringList told =
            mode == WriteMode::Append ? m_messages.warnings : m_messages.information;
        QVERIFY(told.first().contains(QStringLiteral("is also an input")));
    }

    void typesThatAreOnlyRead_data()
    {
        QTest::addColumn<FileType>("type");
        for (const FileType type : fileTypes()) {
            if (!isTextOutput(type) && !isSpreadsheet(type)) {
                QTest::newRow(qPrintable(fileTypeLabel(type))) << type;
            }
        }
    }

    void typesThatAreOnlyRead()
    {
        QFETCH(FileType, type);
        makeFile(m_path, "old");
        m_options.fileType = type;
        for (const bool multi : {false, true}) {
            m_options.multiFile = multi;
            m_options.multiFileColumn = QStringLiteral("h");
            m_messages.clear();
            write(smallTable());
            QVERIFY(m_messages.failed);
            QCOMPARE(m_messages.warnings,
                     QStringList{QStringLiteral("Files of type '%1' cannot be written.")
                                     .arg(fileTypeLabel(type))});
        }
        QCOMPARE(contentOf(m_path), QByteArray("old"));
    }

    void clipboard_data()
    {
        QTest::addColumn<FileType>("type");
        QTest::addColumn<Delimiter>("delimiter");
        QTest::addColumn<QString>("expected");
        QTest::newRow("delimited") << FileType::DelimitedText << Delimiter::SemiColon
                                   << QStringLiteral("a;b\n\"1;2\";€\t\n");
        QTest::newRow("spreadsheet") << FileType::ExcelXlsx << Delimiter::SemiColon
                                     << QStringLiteral("a\tb\n1;2\t\"€\t\"\n");
    }

    void clipboard()
    {
        QFETCH(FileType, type);
        QFETCH(Delimiter, delimiter);
        QFETCH(QString, expected);
        QString clipboard;
        m_context.setClipboard = [&](const QString &text) {
            clipboard = text;
            return true;
        };
        m_options.medium = Medium::Clipboard;
        m_options.path.clear();
        m_options.multiFile = true;
        m_options.writeMode = WriteMode::New;
        m_options.encoding = QStringLiteral("ISO-8859-1");
        m_options.fileType = type;
        m_options.delimiter = delimiter;
        write(tableOf({QStringLiteral("a"), QStringLiteral("b")},
                      {{QStringLiteral("1;2"), QStringLiteral("€\t")}}));
        QCOMPARE(clipboard, expected);
        QCOMPARE(m_messages.warnings, QStringList());
    }

    void clipboardThatIsMissing_data()
    {
        QTest::addColumn<bool>("isThere");
        QTest::newRow("none") << false;
        QTest::newRow("refuses") << true;
    }

    void clipboardThatIsMissing()
    {
        QFETCH(bool, isThere);
        if (isThere) {
            m_context.setClipboard = [](const QString &) { return false; };
        }
        m_options.medium = Medium::Clipboard;
        write(smallTable());
        QVERIFY(m_messages.failed);
        QCOMPARE(m_messages.warnings, QStringList{QStringLiteral("Clipboard is not available.")});
    }

    void multiFileChecksEachRow_data()
    {
        QTest::addColumn<QString>("value");
        QTest::addColumn<QString>("warning");
        const auto addRow = [](const char *tag, const QString &value, const char *warning) {
            QTest::newRow(tag) << value << QString::fromLatin1(warning);
        };
        addRow("empty", QString(), "Empty value for row 2");
        addRow("relative", QStringLiteral("b.csv"),
               "Relative file path for '%1' at row 2, but .transform not saved for it to be "
               "relative to.");
        addRow("resource-like", QStringLiteral(":/b.csv"),
               "Relative file path for '%1' at row 2, but .transform not saved for it to be "
               "relative to.");
        addRow("NUL", QStringLiteral("/b") + QChar(0), "File path not valid for '%1' at row 2");
        addRow("long name", QLatin1Char('/') + QString(256, QLatin1Char('b')),
               "File path not valid for '%1' at row 2");
        addRow("half a character", QStringLiteral("/b") + QChar(0xd800),
               "File path not valid for '%1' at row 2");
        addRow("no folder", QStringLiteral("/no such folder/b.csv"),
               "Folder does not exist for '%1' at row 2");
        addRow("no folder, no name", QStringLiteral("/no such folder/"),
               "Folder does not exist for '%1' at row 2");
        addRow("no name", QStringLiteral("/dev/shm/../"), "No file name for '%1' at row 2");
        addRow("only dots", QStringLiteral("/dev/shm/.."), "No file name for '%1' at row 2");
        addRow("blocked", QStringLiteral("/tmp/x.EXE"),
               "Extension for '%1' is blocked in 'Preferences>Output Extensions'.");
    }

    void multiFileChecksEachRow()
    {
        QFETCH(QString, value);
        QFETCH(QString, warning);
        m_context.blockedExtensions = QStringList{QStringLiteral("exe")};
        writeMulti({m_path, value, m_path});
        QCOMPARE(m_messages.warnings,
                 QStringList{QString(warning).replace(QLatin1String("%1"), value)});
        QCOMPARE(m_messages.information, (QStringList{withPath(QStringLiteral("Written to '%1'")),
                                                      QStringLiteral("1 file(s) written")}));
        QCOMPARE(contentOf(m_path), "n,f\n0," + m_path.toUtf8() + "\n2," + m_path.toUtf8() + '\n');
        QVERIFY(!m_messages.failed);
    }

    void multiFileGroupsByFile()
    {
        m_context.documentFolder = m_folder->path();
        m_options.writeHeader = false;
        writeMulti({QStringLiteral("b.csv"), m_path, inFolder("b.csv"), QStringLiteral("./a.csv"),
                    QStringLiteral("x/../b.csv")});
        QCOMPARE(contentOf(inFolder("b.csv")),
                 "0,b.csv\n2," + inFolder("b.csv").toUtf8() + "\n4,x/../b.csv\n");
        QCOMPARE(contentOf(m_path), "1," + m_path.toUtf8() + "\n3,./a.csv\n");
        QCOMPARE(m_messages.information,
                 (QStringList{QStringLiteral("Written to '%1'").arg(inFolder("b.csv")),
                              withPath(QStringLiteral("Written to '%1'")),
                              QStringLiteral("2 file(s) written")}));
    }

    void multiFileAsksWithLists_data()
    {
        QTest::addColumn<WriteMode>("mode");
        QTest::addColumn<QString>("question");
        const QString created =
            QStringLiteral("11 new file(s) to be created:\n%1/n0\n%1/n1\n%1/n2\n%1/n3\n%1/n4\n"
                           "%1/n5\n%1/n6\n%1/n7\n%1/n8\n%1/n9\n...etc\n");
        QTest::newRow("overwrite")
            << WriteMode::Overwrite
            << QStringLiteral("1 existing file(s) to be overwritten:\n%1/old\n") + created +
                   QStringLiteral("12 file(s) will be written");
        QTest::newRow("append") << WriteMode::Append
                                << QStringLiteral(
                                       "1 existing file(s) to be appended to:\n%1/old\n") +
                                       created + QStringLiteral("12 file(s) will be written");
        QTest::newRow("new") << WriteMode::New
                             << QStringLiteral(
                                    "1 existing file(s) will not be overwritten:\n%1/old\n") +
                                    created + QStringLiteral("11 file(s) will be written");
    }

    void multiFileAsksWithLists()
    {
        QFETCH(WriteMode, mode);
        QFETCH(QString, question);
        makeFile(inFolder("old"), "old");
        QStringList paths{inFolder("old")};
        for (int i = 0; i < 11; ++i) {
            paths.append(m_folder->filePath(QStringLiteral("n%1").arg(i)));
        }
        QString asked;
        m_context.confirm = [&](const QString &text) {
            asked = text;
            return false;
        };
        m_options.writeMode = mode;
        writeMulti(paths);
        QCOMPARE(asked, question.arg(m_folder->path()));
        QCOMPARE(m_messages.information, QStringList{QStringLiteral("Output cancelled by user")});
        QCOMPARE(namesIn(m_folder->path()).size(), 1);
        QCOMPARE(contentOf(inFolder("old")), QByteArray("old"));

        m_options.multiFileConfirm = false;
        m_messages.clear();
        writeMulti(paths);
        QCOMPARE(namesIn(m_folder->path()).size(), 12);
        QCOMPARE(m_messages.information.last(),
                 QStringLiteral("%1 file(s) written").arg(mode == WriteMode::New ? 11 : 12));
        QCOMPARE(m_messages.warnings.size(), mode == WriteMode::New ? 1 : 0);
    }

    void multiFileWithNothingToWrite()
    {
        m_context.confirm = [](const QString &) { return false; };
        writeMulti({QString(), QString()});
        QCOMPARE(m_messages.warnings, (QStringList{QStringLiteral("Empty value for row 1"),
                                                   QStringLiteral("Empty value for row 2")}));
        QCOMPARE(m_messages.information, QStringList{QStringLiteral("0 files written")});
        QVERIFY(!m_messages.failed);

        m_messages.clear();
        QStringList many;
        for (int i = 0; i < 3000; ++i) {
            many.append(QString());
        }
        writeMulti(many);
        QCOMPARE(m_messages.warnings.size(), 1001);
        QVERIFY(m_messages.warnings.last().startsWith(QStringLiteral("2,000 more row(s)")));
    }

    void multiFileNeedsItsColumn_data()
    {
        QTest::addColumn<QString>("column");
        QTest::addColumn<QString>("warning");
        QTest::newRow("none") << QString() << QStringLiteral("No column set for 'Files column'.\n");
        QTest::newRow("gone") << QStringLiteral("g")
                              << QStringLiteral("'Files column' 'g' not found, nothing written.");
    }

    void multiFileNeedsItsColumn()
    {
        QFETCH(QString, column);
        QFETCH(QString, warning);
        writeMulti({m_path}, column);
        QCOMPARE(m_messages.warnings, QStringList{warning});
        QCOMPARE(m_messages.failed, !column.isEmpty());
        QCOMPARE(namesIn(m_folder->path()), QStringList());
    }

    void multiFileGoesOnAfterFailure()
    {
        QDir(m_folder->path()).mkdir(QStringLiteral("sub"));
        writeMulti({inFolder("sub"), m_path});
        QVERIFY(m_messages.failed);
        QCOMPARE(m_messages.warnings.size(), 1);
        QCOMPARE(m_messages.information.last(), QStringLiteral("1 file(s) written"));
    }

    void multiFileStops()
    {
        QVector<double> reported;
        writeMulti({m_path, inFolder("b.csv")}, QStringLiteral("f"), [&](double fraction) {
            reported.append(fraction);
            return reported.size() < 3;
        });
        QCOMPARE(namesIn(m_folder->path()), QStringList{QStringLiteral("a.csv")});
        QVERIFY(std::is_sorted(reported.begin(), reported.end()));
        QVERIFY(!m_messages.failed);
    }

private:
    static Dataset smallTable() { return tableOf({QStringLiteral("h")}, {{QStringLiteral("1")}}); }
    QString inFolder(const char *name) const
    {
        return m_folder->filePath(QString::fromLocal8Bit(name));
    }
    QString withPath(const QString &text) const
    {
        return text.contains(QLatin1String("%1")) ? text.arg(m_path) : text;
    }
    void write(const Dataset &table)
    {
        writeOutput(m_options, table, m_context, &m_messages, Progress());
    }
    /// A table of row numbers and files, written by its files.
    void writeMulti(const QStringList &files, const QString &column = QStringLiteral("f"),
                    const Progress &progress = Progress())
    {
        Rows rows;
        for (const QString &file : files) {
            rows.append({QString::number(rows.size()), file});
        }
        m_options.multiFile = true;
        m_options.multiFileColumn = column;
        writeOutput(m_options, tableOf({QStringLiteral("n"), QStringLiteral("f")}, rows), m_context,
                    &m_messages, progress);
    }

    std::unique_ptr<QTemporaryDir> m_folder;
    QString m_path;
    OutputOptions m_options;
    OutputContext m_context;
    Messages m_messages;
};

TW_TEST_CLASS(TestOutputWriter)
#include "tst_outputwriter.moc"
