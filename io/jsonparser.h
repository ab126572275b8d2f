#pragma once

#include <QJsonParseError>
#include <QString>
#include <string_view>

class TextArena;

/// Receives the parts of a JSON document in their order. Every function answers false to stop.
class JsonHandler
{
public:
    virtual ~JsonHandler() = default;
    virtual bool beginObject() = 0;
    virtual bool key(std::string_view name) = 0;
    virtual bool endObject() = 0;
    virtual bool beginArray() = 0;
    virtual bool endArray() = 0;
    /// A string without its quotes and escapes, or a number, true or false as it stands.
    virtual bool value(std::string_view text) = 0;
    virtual bool null() = 0;
};

/// Parses JSON without building a tree. It takes the documents that QJsonDocument::fromJson() takes
/// (which is lenient with control characters, escapes and numbers such as ".5"), and fails with the
/// same codes at the same offsets; a test compares the two. Unlike there, numbers have no limits
/// and keep their text, and names keep their order.
class JsonParser
{
public:
    enum class Outcome { Done, Stopped, Failed };

    /// The text must be well-formed UTF-8 and is left alone; `texts` takes the strings that have
    /// escapes.
    JsonParser(std::string_view text, JsonHandler *handler, TextArena *texts);

    /// Parses the whole text as one document, with an array or an object at its top.
    Outcome parse();
    /// Parses one element of an array from the start of the text; position() is then behind it. A
    /// text that ends in or right behind a number fails, since more of it may follow.
    Outcome parseElement();

    /// The bytes parsed so far.
    qint64 position() const { return m_at - m_begin; }
    /// After a failure.
    QJsonParseError::ParseError errorCode() const { return m_code; }
    QString errorText() const;

private:
    using Code = QJsonParseError::ParseError;

    bool skipSpace();
    char nextToken();
    bool fail(Code code);
    bool stopUnless(bool goOn);
    bool parseTop();
    bool parseObject();
    bool parseMember();
    bool parseArray();
    bool parseValue();
    bool parseWord(std::string_view rest);
    bool parseNumber();
    bool parseString(std::string_view *text);
    bool parseEscapedString(std::string_view *text);
    bool parseEscape(char **out);
    bool parseCodeUnit(uint *unit);

    const char *m_begin;
    const char *m_at;
    const char *m_end;
    JsonHandler *m_handler;
    TextArena *m_texts;
    Code m_code = QJsonParseError::NoError;
    bool m_stopped = false;
    int m_depth = 0;
};
