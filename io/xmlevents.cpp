// Without it the header hides the limits on entities.
#define XML_DTD
#include <expat.h>

#include "xmlevents.h"

#include "progress.h"
#include "utf8.h"

#include <QCoreApplication>
#include <algorithm>
#include <exception>
#include <memory>
#include <new>

namespace {

constexpr size_t largestPart = size_t(1) << 30;
constexpr int stepsBetweenReports = 8 * progressInterval;
constexpr int mostNested = 1024;
// Entities may make a document this much longer, once their text passes a threshold.
constexpr float mostAmplification = 10;
constexpr unsigned long long amplificationThreshold = 1 << 20;

struct XmlTexts
{
    Q_DECLARE_TR_FUNCTIONS(XmlTexts)
};

/// Stands between the parser's callbacks, through which no exception may pass, and the handler.
class Events
{
public:
    Events(std::string_view text, XmlHandler *handler, const std::function<bool(double)> &progress,
           XmlError *error)
        : m_text(text)
        , m_handler(handler)
        , m_progress(progress)
        , m_error(error)
        , m_parser(XML_ParserCreate("UTF-8"), XML_ParserFree)
    {
        if (!m_parser) {
            throw std::bad_alloc();
        }
        XML_SetUserData(m_parser.get(), this);
        XML_SetElementHandler(m_parser.get(), beginElement, endElement);
        XML_SetCharacterDataHandler(m_parser.get(), addText);
        XML_SetXmlDeclHandler(m_parser.get(), declaration);
        XML_SetSkippedEntityHandler(m_parser.get(), skippedEntity);
        XML_SetExternalEntityRefHandler(m_parser.get(), externalEntity);
        XML_SetBillionLaughsAttackProtectionMaximumAmplification(m_parser.get(), mostAmplification);
        XML_SetBillionLaughsAttackProtectionActivationThreshold(m_parser.get(),
                                                                amplificationThreshold);
    }

    XmlOutcome run()
    {
        size_t at = 0;
        do {
            const size_t size = std::min(m_text.size() - at, largestPart);
            const bool isLast = at + size == m_text.size();
            if (XML_Parse(m_parser.get(), m_text.data() + at, int(size), isLast ? 1 : 0) !=
                XML_STATUS_OK) {
                return ended();
            }
            at += size;
        } while (at < m_text.size());
        return XmlOutcome::Done;
    }

private:
    XmlOutcome ended()
    {
        if (m_exception) {
            std::rethrow_exception(m_exception);
        }
        if (m_stopped) {
            return XmlOutcome::Stopped;
        }
        const XML_Error code = XML_GetErrorCode(m_parser.get());
        if (code == XML_ERROR_NO_MEMORY) {
            throw std::bad_alloc();
        }
        if (m_error->text.isEmpty()) {
            setError(QString::fromUtf8(XML_ErrorString(code)));
        }
        return XmlOutcome::Failed;
    }

    void setError(const QString &text)
    {
        m_error->text = text;
        m_error->line = qint64(XML_GetCurrentLineNumber(m_parser.get()));
        const size_t at = std::min(size_t(std::max<XML_Index>(position(), 0)), m_text.size());
        const size_t bytes = std::min(size_t(XML_GetCurrentColumnNumber(m_parser.get())), at);
        m_error->column = 1 + qint64(Utf8::decoded(m_text.substr(at - bytes, bytes)).size());
    }

    XML_Index position() const { return XML_GetCurrentByteIndex(m_parser.get()); }

    template <class Call>
    static void guarded(void *events, Call call)
    {
        Events *const self = static_cast<Events *>(events);
        if (self->m_ended) {
            return;
        }
        try {
            self->m_stopped = !call(self) || !self->step();
        } catch (...) {
            self->m_exception = std::current_exception();
        }
        if (self->m_stopped || self->m_exception) {
            self->end();
        }
    }

    void end()
    {
        m_ended = true;
        XML_StopParser(m_parser.get(), XML_FALSE);
    }

    void fail(const QString &text)
    {
        if (!m_ended) {
            setError(text);
            end();
        }
    }

    bool step()
    {
        return ++m_steps % stepsBetweenReports != 0 || !m_progress ||
               m_progress(double(position()) / double(m_text.size()));
    }

    static void XMLCALL beginElement(void *events, const XML_Char *name,
                                     const XML_Char **attributes)
    {
        guarded(events, [&](Events *self) {
            if (++self->m_depth > mostNested) {
                self->fail(XmlTexts::tr("elements are nested too deeply"));
                return true;
            }
            return self->m_handler->beginElement(name, attributes);
        });
    }
    static void XMLCALL endElement(void *events, const XML_Char *)
    {
        guarded(events, [](Events *self) {
            --self->m_depth;
            return self->m_handler->endElement();
        });
    }
    static void XMLCALL addText(void *events, const XML_Char *part, int size)
    {
        guarded(events, [&](Events *self) { return self->m_handler->text({part, size_t(size)}); });
    }
    static void XMLCALL declaration(void *events, const XML_Char *, const XML_Char *encoding, int)
    {
        if (encoding) {
            static_cast<Events *>(events)->m_error->declaredEncoding = QString::fromUtf8(encoding);
        }
    }
    static void XMLCALL skippedEntity(void *events, const XML_Char *name, int)
    {
        static_cast<Events *>(events)->fail(
            XmlTexts::tr("the entity '%1' is not defined in the file")
                .arg(QString::fromUtf8(name)));
    }
    static int XMLCALL externalEntity(XML_Parser parser, const XML_Char *, const XML_Char *,
                                      const XML_Char *, const XML_Char *)
    {
        Events *const self = static_cast<Events *>(XML_GetUserData(parser));
        if (!self->m_ended) {
            self->setError(XmlTexts::tr("external entities are not read"));
        }
        return XML_STATUS_ERROR;
    }

    std::string_view m_text;
    XmlHandler *m_handler;
    const std::function<bool(double)> &m_progress;
    XmlError *m_error;
    std::unique_ptr<XML_ParserStruct, void (*)(XML_Parser)> m_parser;
    int m_depth = 0;
    qint64 m_steps = 0;
    bool m_stopped = false;
    bool m_ended = false;
    std::exception_ptr m_exception;
};

} // namespace

XmlOutcome parseXml(std::string_view text, XmlHandler *handler,
                    const std::function<bool(double)> &progress, XmlError *error)
{
    return Events(text, handler, progress, error).run();
}
