#pragma once

#include <QString>
#include <functional>
#include <string_view>

/// Receives the elements of an XML document. Every function answers false to stop.
class XmlHandler
{
public:
    virtual ~XmlHandler() = default;
    /// `attributes` holds names and values in turn, and ends with null. Names are as written, with
    /// their prefixes.
    virtual bool beginElement(std::string_view name, const char *const *attributes) = 0;
    virtual bool endElement() = 0;
    /// A part of the text of the innermost element, entities and CDATA resolved.
    virtual bool text(std::string_view part) = 0;
};

/// Why a document could not be parsed, and where, counted from 1 in characters.
struct XmlError
{
    QString text;
    qint64 line = 0;
    qint64 column = 0;
    /// The encoding that the document says it has; set when there is no error, too.
    QString declaredEncoding;
};

enum class XmlOutcome { Done, Stopped, Failed };

/// Parses a document, which is UTF-8 whatever it declares. Entities that multiply, external
/// entities and undefined ones are errors; nothing outside of the text is ever read. `progress` is
/// called now and then with the part done, answers false to stop, and may throw.
XmlOutcome parseXml(std::string_view text, XmlHandler *handler,
                    const std::function<bool(double)> &progress, XmlError *error);
