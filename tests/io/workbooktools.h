#pragma once

#include <QByteArray>
#include <QMap>
#include <QString>
#include <gsf/gsf-outfile-msole.h>
#include <gsf/gsf-output-stdio.h>
#include <zip.h>

/// Makes small workbooks of the XLSX format from the XML of their parts.
class XlsxFile
{
public:
    XlsxFile()
    {
        parts["_rels/.rels"] = relationships({{"rId1", "officeDocument", "xl/workbook.xml"}});
        parts["xl/workbook.xml"] = workbook("<sheet name=\"One\" sheetId=\"1\" r:id=\"rId1\"/>");
        parts["xl/_rels/workbook.xml.rels"] =
            relationships({{"rId1", "worksheet", "worksheets/sheet1.xml"},
                           {"rId2", "styles", "styles.xml"},
                           {"rId3", "sharedStrings", "/xl/sharedStrings.xml"}});
    }

    struct Relationship
    {
        const char *id;
        const char *type;
        const char *target;
    };

    static QByteArray relationships(std::initializer_list<Relationship> all)
    {
        QByteArray xml = "<Relationships xmlns=\"http://schemas.openxmlformats.org/package/2006/"
                         "relationships\">";
        for (const Relationship &one : all) {
            xml += QByteArray("<Relationship Id=\"") + one.id + "\" Type=\"" + typeStart +
                   one.type + "\" Target=\"" + one.target + "\"/>";
        }
        return xml + "</Relationships>";
    }
    static QByteArray workbook(const QByteArray &sheets, const QByteArray &properties = "")
    {
        return "<?xml version=\"1.0\"?><workbook " + spaces() + ">" + properties + "<sheets>" +
               sheets + "</sheets></workbook>";
    }
    static QByteArray worksheet(const QByteArray &rows, const QByteArray &before = "")
    {
        return "<worksheet " + spaces() + ">" + before + "<sheetData>" + rows +
               "</sheetData></worksheet>";
    }
    static QByteArray sharedTexts(const QByteArray &items)
    {
        return "<sst " + spaces() + ">" + items + "</sst>";
    }

    /// A workbook whose only sheet has these rows.
    static XlsxFile ofRows(const QByteArray &rows, const QByteArray &before = "")
    {
        XlsxFile file;
        file.parts["xl/worksheets/sheet1.xml"] = worksheet(rows, before);
        return file;
    }

    bool write(const QString &path, bool withTwins = false) const
    {
        zip_t *const archive =
            zip_open(path.toUtf8().constData(), ZIP_CREATE | ZIP_TRUNCATE, nullptr);
        for (auto part = parts.begin(); archive && part != parts.end(); ++part) {
            add(archive, part.key(), part.value());
            if (withTwins) {
                add(archive, part.key().toUpper(), part.value());
            }
        }
        return archive && zip_close(archive) == 0;
    }

    QMap<QByteArray, QByteArray> parts;

private:
    static constexpr const char *typeStart =
        "http://schemas.openxmlformats.org/officeDocument/2006/relationships/";
    static QByteArray spaces()
    {
        return "xmlns=\"http://schemas.openxmlformats.org/spreadsheetml/2006/main\" "
               "xmlns:r=\"http://schemas.openxmlformats.org/officeDocument/2006/relationships\"";
    }
    static void add(zip_t *archive, const QByteArray &name, const QByteArray &content)
    {
        zip_file_add(
            archive, name.constData(),
            zip_source_buffer(archive, content.constData(), zip_uint64_t(content.size()), 0),
            ZIP_FL_ENC_UTF_8);
    }
};

/// Makes a compound file with one stream.
inline bool writeContainer(const QString &path, const QByteArray &stream, const QByteArray &bytes)
{
    GsfOutput *const file = gsf_output_stdio_new(path.toUtf8().constData(), nullptr);
    GsfOutfile *const container = gsf_outfile_msole_new(file);
    GsfOutput *const child = gsf_outfile_new_child(container, stream.constData(), FALSE);
    bool good = gsf_output_write(child, size_t(bytes.size()),
                                 reinterpret_cast<const guint8 *>(bytes.constData())) != 0;
    good = gsf_output_close(child) && good;
    good = gsf_output_close(GSF_OUTPUT(container)) && good;
    for (gpointer object : {gpointer(child), gpointer(container), gpointer(file)}) {
        g_object_unref(object);
    }
    return good;
}
