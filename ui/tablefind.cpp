#include "tablefind.h"

#include "utf8.h"

namespace {

constexpr int cellsPerStep = 512;
enum Knowledge : quint8 { Unknown, NoMatch, Match };

} // namespace

TableFind::TableFind(const DataTableModel *model, QObject *parent)
    : QObject(parent)
    , m_model(model)
{
    m_matcher.setCaseSensitivity(Qt::CaseInsensitive);
    connect(model, &DataTableModel::dataReplaced, this, &TableFind::reset);
    connect(&m_counting, &IdleWork::advanced, this, &TableFind::countChanged);
    connect(&m_counting, &IdleWork::ended, this, &TableFind::countChanged);
    connect(&m_searching, &IdleWork::ended, this, [this] {
        if (!m_isFound) {
            Q_EMIT notFound();
            return;
        }
        const int columns = m_model->columnCount();
        Q_EMIT found({int(m_at / columns), int(m_at % columns)}, m_wrapped);
    });
}

void TableFind::setText(const QString &text)
{
    m_matcher.setPattern(text);
    reset();
    Q_EMIT textChanged();
}

void TableFind::reset()
{
    m_searching.stop();
    m_counting.stop();
    m_count = 0;
    m_countedColumn = 0;
    m_countedRow = 0;
    m_known.assign(size_t(m_model->columnCount()), {});
    if (!text().isEmpty()) {
        m_counting.start([this] { return countSome(); });
    }
    Q_EMIT countChanged();
}

bool TableFind::countSome()
{
    if (m_countedColumn >= m_model->columnCount()) {
        return false;
    }
    const int end = std::min(m_model->rowCount() - m_countedRow, cellsPerStep) + m_countedRow;
    for (; m_countedRow < end; ++m_countedRow) {
        m_count += matches(m_countedRow, m_countedColumn) ? 1 : 0;
    }
    if (m_countedRow == m_model->rowCount()) {
        m_countedRow = 0;
        ++m_countedColumn;
    }
    return true;
}

bool TableFind::matches(int row, int column) const
{
    const ColumnReader &reader = m_model->reader(column);
    const quint32 code = reader.code(m_model->dataRow(row));
    if (code == ValuePool::emptyCode || text().isEmpty()) {
        return false;
    }
    const auto look = [&] {
        return m_matcher.indexIn(Utf8::decoded(reader.utf8OfCode(code))) >= 0;
    };
    if (!reader.isPooled()) {
        return look();
    }
    std::vector<quint8> &known = m_known[size_t(column)];
    if (known.empty()) {
        known.assign(reader.codeCount(), Unknown);
    }
    if (known[code] == Unknown) {
        known[code] = look() ? Match : NoMatch;
    }
    return known[code] == Match;
}

void TableFind::search(CellPlace from, bool forward, bool includeFrom)
{
    const qint64 cells = qint64(m_model->rowCount()) * m_model->columnCount();
    if (text().isEmpty() || cells == 0) {
        m_searching.stop();
        return;
    }
    const qint64 start = from.isValid() ? qint64(from.row) * m_model->columnCount() + from.column
                                        : (forward ? cells - 1 : 0);
    m_forward = forward;
    m_wrapped = false;
    m_isFound = false;
    m_at = start;
    m_left = cells;
    if (includeFrom && from.isValid() && matches(from.row, from.column)) {
        m_left = 0;
        m_isFound = true;
    }
    m_searching.start([this] { return searchSome(); });
}

bool TableFind::searchSome()
{
    const int columns = m_model->columnCount();
    const qint64 cells = qint64(m_model->rowCount()) * columns;
    for (int n = 0; n < cellsPerStep && m_left > 0; ++n, --m_left) {
        m_at += m_forward ? 1 : -1;
        if (m_at < 0 || m_at >= cells) {
            m_at = m_forward ? 0 : cells - 1;
            m_wrapped = true;
        }
        if (matches(int(m_at / columns), int(m_at % columns))) {
            m_isFound = true;
            return false;
        }
    }
    return m_left > 0;
}
