#pragma once

#include "cellformats.h"

#include <QByteArray>
#include <QDomDocument>
#include <map>

/// Attributes are kept in hash tables: with a random seed their order would change from one run to
/// the next. To be called before an XML text is parsed that will be written again.
void keepAttributeOrder();

/// The cell styles of an XLSX workbook: what its styles part holds, and what our cells need beside.
class XlsxStyles
{
public:
    /// The few styles of a new workbook.
    XlsxStyles();

    /// Takes over a styles part; answers false when it is not understood.
    bool load(const QByteArray &part);
    /// A style like another one, `base`, but for its number format. What `base` shows numbers as
    /// stays when it is of the same kind.
    int withNumberFormat(int base, const std::string &code);
    int bold();
    int link(int base);
    QByteArray part() const;

private:
    QDomElement section(const QString &name) const;
    QDomElement style(int number) const;
    int add(const QDomElement &style);
    int addFont(int base, bool isBold, const QString &color);
    int numberFormat(const std::string &code);
    QString codeOf(int id) const;

    QDomDocument m_document;
    std::map<std::pair<int, std::string>, int> m_known;
    std::map<std::string, int> m_numberFormats;
    std::map<int, int> m_links;
    int m_bold = -1;
    int m_count = 0;
};
