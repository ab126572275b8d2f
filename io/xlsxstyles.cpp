#include "xlsxstyles.h"

namespace {

constexpr char newStyles[] =
    R"(<?xml version="1.0" encoding="UTF-8" standalone="yes"?>
<styleSheet xmlns="http://schemas.openxmlformats.org/spreadsheetml/2006/main">)"
    R"(<fonts count="1"><font><sz val="11"/><name val="Calibri"/><family val="2"/></font></fonts>)"
    R"(<fills count="2"><fill><patternFill patternType="none"/></fill>)"
    R"(<fill><patternFill patternType="gray125"/></fill></fills>)"
    R"(<borders count="1"><border><left/><right/><top/><bottom/><diagonal/></border></borders>)"
    R"(<cellStyleXfs count="1"><xf numFmtId="0" fontId="0" fillId="0" borderId="0"/></cellStyleXfs>)"
    R"(<cellXfs count="1"><xf numFmtId="0" fontId="0" fillId="0" borderId="0" xfId="0"/></cellXfs>)"
    R"(<cellStyles count="1"><cellStyle name="Normal" xfId="0" builtinId="0"/></cellStyles>)"
    R"(</styleSheet>)";

constexpr int firstOwnFormat = 164; // those below are built in
const QString formatId = QStringLiteral("numFmtId");
const QString fontId = QStringLiteral("fontId");

void setCount(QDomElement section)
{
    int count = 0;
    for (QDomElement child = section.firstChildElement(); !child.isNull();
         child = child.nextSiblingElement()) {
        ++count;
    }
    section.setAttribute(QStringLiteral("count"), count);
}

QDomElement childAt(const QDomElement &section, int number)
{
    QDomElement child = section.firstChildElement();
    for (int i = 0; i < number && !child.isNull(); ++i) {
        child = child.nextSiblingElement();
    }
    return child;
}

/// What kind of value a format shows: a date, a time, a number, or what comes (General, text).
bool areAlike(const CellNumberFormat &a, const CellNumberFormat &b)
{
    return a.date == b.date && (a.date || a.time == b.time);
}

} // namespace

void keepAttributeOrder()
{
    qSetGlobalQHashSeed(0);
}

XlsxStyles::XlsxStyles()
{
    load(QByteArray::fromRawData(newStyles, int(sizeof newStyles) - 1));
}

bool XlsxStyles::load(const QByteArray &part)
{
    keepAttributeOrder();
    m_document = QDomDocument();
    if (!m_document.setContent(part) ||
        m_document.documentElement().tagName() != QLatin1String("styleSheet")) {
        return false;
    }
    m_known.clear();
    m_numberFormats.clear();
    m_links.clear();
    m_bold = -1;
    m_count = 0;
    const QDomElement styles = section(QStringLiteral("cellXfs"));
    for (QDomElement style = styles.firstChildElement(); !style.isNull();
         style = style.nextSiblingElement()) {
        ++m_count;
    }
    return m_count > 0 && !section(QStringLiteral("fonts")).firstChildElement().isNull();
}

QDomElement XlsxStyles::section(const QString &name) const
{
    return m_document.documentElement().firstChildElement(name);
}

QDomElement XlsxStyles::style(int number) const
{
    const QDomElement found = childAt(section(QStringLiteral("cellXfs")), number);
    return found.isNull() ? childAt(section(QStringLiteral("cellXfs")), 0) : found;
}

int XlsxStyles::add(const QDomElement &style)
{
    section(QStringLiteral("cellXfs")).appendChild(style);
    return m_count++;
}

int XlsxStyles::numberFormat(const std::string &code)
{
    if (code == "General") {
        return 0;
    }
    if (code == "0") {
        return 1;
    }
    if (code == "@") {
        return 49;
    }
    const auto known = m_numberFormats.find(code);
    if (known != m_numberFormats.end()) {
        return known->second;
    }
    QDomElement formats = section(QStringLiteral("numFmts"));
    if (formats.isNull()) {
        formats = m_document.createElement(QStringLiteral("numFmts"));
        QDomElement root = m_document.documentElement();
        root.insertBefore(formats, root.firstChild());
    }
    const QString text = QString::fromStdString(code);
    int id = firstOwnFormat;
    for (QDomElement format = formats.firstChildElement(); !format.isNull();
         format = format.nextSiblingElement()) {
        const int used = format.attribute(formatId).toInt();
        if (format.attribute(QStringLiteral("formatCode")) == text) {
            return m_numberFormats[code] = used;
        }
        id = std::max(id, used + 1);
    }
    QDomElement format = m_document.createElement(QStringLiteral("numFmt"));
    format.setAttribute(formatId, id);
    format.setAttribute(QStringLiteral("formatCode"), text);
    formats.appendChild(format);
    return m_numberFormats[code] = id;
}

QString XlsxStyles::codeOf(int id) const
{
    const QDomElement formats = section(QStringLiteral("numFmts"));
    for (QDomElement format = formats.firstChildElement(); !format.isNull();
         format = format.nextSiblingElement()) {
        if (format.attribute(formatId).toInt() == id) {
            return format.attribute(QStringLiteral("formatCode"));
        }
    }
    return {};
}

int XlsxStyles::withNumberFormat(int base, const std::string &code)
{
    const auto key = std::make_pair(base, code);
    const auto known = m_known.find(key);
    if (known != m_known.end()) {
        return known->second;
    }
    const QDomElement old = style(base);
    const int oldId = old.attribute(formatId).toInt();
    const QString oldCode = codeOf(oldId);
    const CellNumberFormat oldFormat =
        oldCode.isEmpty() ? builtInNumberFormat(oldId) : parseNumberFormat(oldCode.toStdString());
    const bool keeps = oldId != 0 && areAlike(oldFormat, parseNumberFormat(code));
    if (code == "General" || keeps) {
        return m_known[key] = base;
    }
    QDomElement copy = old.cloneNode().toElement();
    copy.setAttribute(formatId, numberFormat(code));
    copy.setAttribute(QStringLiteral("applyNumberFormat"), 1);
    return m_known[key] = add(copy);
}

int XlsxStyles::addFont(int base, bool isBold, const QString &color)
{
    QDomElement fonts = section(QStringLiteral("fonts"));
    QDomElement font =
        childAt(fonts, style(base).attribute(fontId).toInt()).cloneNode().toElement();
    const auto put = [&](const QString &name, const QString &attribute, const QString &value) {
        font.removeChild(font.firstChildElement(name));
        QDomElement child = m_document.createElement(name);
        if (!attribute.isEmpty()) {
            child.setAttribute(attribute, value);
        }
        return child;
    };
    if (!color.isEmpty()) {
        // Where spreadsheet programs expect it: behind the size.
        font.insertAfter(put(QStringLiteral("color"), QStringLiteral("rgb"), color),
                         font.firstChildElement(QStringLiteral("sz")));
        font.insertBefore(put(QStringLiteral("u"), QString(), QString()), font.firstChild());
    }
    if (isBold) {
        font.insertBefore(put(QStringLiteral("b"), QString(), QString()), font.firstChild());
    }
    fonts.appendChild(font);
    setCount(fonts);
    return fonts.attribute(QStringLiteral("count")).toInt() - 1;
}

int XlsxStyles::bold()
{
    if (m_bold < 0) {
        QDomElement copy = style(0).cloneNode().toElement();
        copy.setAttribute(fontId, addFont(0, true, QString()));
        copy.setAttribute(QStringLiteral("applyFont"), 1);
        m_bold = add(copy);
    }
    return m_bold;
}

int XlsxStyles::link(int base)
{
    const auto known = m_links.find(base);
    if (known != m_links.end()) {
        return known->second;
    }
    QDomElement copy = style(base).cloneNode().toElement();
    copy.setAttribute(fontId, addFont(base, false, QStringLiteral("FF0563C1")));
    copy.setAttribute(QStringLiteral("applyFont"), 1);
    return m_links[base] = add(copy);
}

QByteArray XlsxStyles::part() const
{
    for (const QString &name : {QStringLiteral("numFmts"), QStringLiteral("cellXfs")}) {
        const QDomElement list = section(name);
        if (!list.isNull()) {
            setCount(list);
        }
    }
    return m_document.toByteArray(-1);
}
