#pragma once

#include "cellnumberformat.h"
#include "xlsxpackage.h"

#include <QCoreApplication>
#include <QDomDocument>
#include <functional>
#include <map>
#include <set>

/// An existing XLSX workbook of which one sheet is changed or to which one is added. Everything
/// else is carried over as it is packed.
class XlsxWorkbook
{
    Q_DECLARE_TR_FUNCTIONS(XlsxWorkbook)

public:
    /// Null with an error when the file is no such workbook.
    static std::unique_ptr<XlsxWorkbook> open(const QString &path, QString *error);

    DateSystem dateSystem() const { return m_dateSystem; }
    /// The part of the sheet of that name (of the first one for an empty name); empty when there is
    /// none. Upper and lower case are the same.
    QString sheetPart(const QString &name) const;
    QString firstSheet() const { return m_sheets.empty() ? QString() : m_sheets.front().name; }
    bool hasSheet(const QString &name) const;
    const QString &stylesPart() const { return m_stylesPart; }
    XlsxPackage *package() const { return m_package.get(); }

    /// Makes room for a sheet and answers its part, which has to be written then.
    QString addSheet(const QString &name);
    /// Links of a sheet to the outside; answers their ids.
    bool addLinks(const QString &sheetPart, const std::vector<std::string> &targets,
                  QStringList *ids, QString *error);
    void setPart(const QString &part, const QByteArray &content);

    /// Writes the workbook; the named parts are left to the caller.
    bool write(ZipWriter *zip, const std::set<QString> &except, const std::function<bool()> &goOn,
               QString *error);

private:
    struct Sheet
    {
        QString name;
        QString part;
    };

    XlsxWorkbook() = default;
    bool load(QString *error);
    bool readDocument(const QString &part, const char *root, QDomDocument *document,
                      QString *error);
    void dropCalculationOrder();
    void recalculateOnLoad();

    std::unique_ptr<XlsxPackage> m_package;
    QString m_workbookPart;
    QDomDocument m_workbook;
    QDomDocument m_relationships;
    QDomDocument m_types;
    std::vector<Sheet> m_sheets;
    QString m_stylesPart;
    DateSystem m_dateSystem = DateSystem::From1900;
    std::map<QString, QByteArray> m_changed;
    std::set<QString> m_dropped;
};
