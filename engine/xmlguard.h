#pragma once

#include <QString>

/// What is wrong with an XML text, and where (counted from 1).
struct XmlFault
{
    QString message;
    int line = 0;
    int column = 0;
};

/// Looks over an XML text before it is parsed, for what the parser accepts in silence or would be
/// worn down by: entity declarations, very deep nesting, attributes that occur twice. Answers true
/// when there is nothing of the kind; whether the text is well-formed is the parser's business.
bool checkXml(const QString &text, XmlFault *fault);
