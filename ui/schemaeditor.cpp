#include "schemaeditor.h"

#include "dataset.h"
#include "inputoptions.h"
#include "inputreader.h"
#include "outputoptions.h"
#include "textoutput.h"

#include <QClipboard>
#include <QDialogButtonBox>
#include <QGuiApplication>
#include <QHeaderView>
#include <QLabel>
#include <QMessageBox>
#include <QPushButton>
#include <QShortcut>
#include <QTableWidget>
#include <QVBoxLayout>
#include <algorithm>

namespace {

enum Column { Name = 0, MissingValue = 1 };

/// Names and missing values as tab-separated text, as spreadsheets copy it.
QString copiedText(const Dataset &schema)
{
    OutputOptions options;
    options.delimiter = Delimiter::Tab;
    options.writeHeader = false;
    options.lineEnding = LineEnding::Unix;
    QString text;
    Messages messages;
    makeText(options, QString(), schema, &text, &messages, Progress());
    return text;
}

Dataset pastedTable(const QString &text)
{
    InputOptions options;
    options.medium = Medium::Clipboard;
    options.text = text;
    options.delimiter = Delimiter::Tab;
    options.quoting = InputQuoting::Quoted;
    options.header = false;
    Messages messages;
    return readInput(options, QString(), &messages, Progress());
}

} // namespace

SchemaEditor::SchemaEditor(ColumnsOfInput columnsOfInput, QWidget *parent)
    : QDialog(parent)
    , m_columnsOfInput(std::move(columnsOfInput))
    , m_table(new QTableWidget(0, 2, this))
    , m_problem(new QLabel(this))
{
    setWindowTitle(tr("Schema[*]"));
    auto *layout = new QVBoxLayout(this);
    auto *hint = new QLabel(tr("The columns that the input is expected to have, in order."), this);
    hint->setWordWrap(true);
    layout->addWidget(hint);

    m_table->setAccessibleName(tr("Schema"));
    m_table->setHorizontalHeaderLabels({tr("Name"), tr("Missing column value")});
    m_table->horizontalHeader()->setSectionResizeMode(Name, QHeaderView::Stretch);
    m_table->horizontalHeader()->setSectionResizeMode(MissingValue, QHeaderView::Stretch);
    m_table->horizontalHeader()->setDefaultAlignment(Qt::AlignLeft | Qt::AlignVCenter);
    m_table->setSelectionBehavior(QAbstractItemView::SelectRows);
    m_table->setTabKeyNavigation(false);
    auto *line = new QHBoxLayout;
    line->addWidget(m_table, 1);
    auto *side = new QVBoxLayout;
    line->addLayout(side);
    layout->addLayout(line, 1);
    addButtons(side);

    m_problem->setWordWrap(true);
    m_problem->setForegroundRole(QPalette::BrightText);
    layout->addWidget(m_problem);
    auto *buttons = new QDialogButtonBox(QDialogButtonBox::Cancel, this);
    buttons->addButton(tr("Use"), QDialogButtonBox::AcceptRole)->setDefault(true);
    layout->addWidget(buttons);
    connect(buttons, &QDialogButtonBox::accepted, this, &SchemaEditor::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    connect(m_table, &QTableWidget::itemChanged, this, &SchemaEditor::changed);
    connect(m_table, &QTableWidget::itemSelectionChanged, this, &SchemaEditor::updateButtons);
    const auto onKey = [this](const QKeySequence &key, void (SchemaEditor::*slot)()) {
        auto *shortcut = new QShortcut(key, m_table, nullptr, nullptr, Qt::WidgetShortcut);
        connect(shortcut, &QShortcut::activated, this, slot);
    };
    onKey(QKeySequence::Delete, &SchemaEditor::removeRows);
    onKey(QKeySequence::Copy, &SchemaEditor::copy);
    onKey(QKeySequence::Paste, &SchemaEditor::paste);
    resize(fontMetrics().averageCharWidth() * 80, fontMetrics().lineSpacing() * 26);
    updateButtons();
}

void SchemaEditor::addButtons(QBoxLayout *layout)
{
    const auto add = [this, layout](const QString &text, const QString &help) {
        auto *button = new QPushButton(text, this);
        button->setToolTip(help);
        button->setAutoDefault(false);
        layout->addWidget(button);
        return button;
    };
    connect(add(tr("&Import"), tr("Take the columns that the input has now; replaces the schema.")),
            &QPushButton::clicked, this, &SchemaEditor::import);
    connect(add(tr("&Add"), tr("Add a name below the selected row, or at the end.")),
            &QPushButton::clicked, this, &SchemaEditor::addRow);
    m_delete = add(tr("&Delete"), tr("Delete the selected names."));
    connect(m_delete, &QPushButton::clicked, this, &SchemaEditor::removeRows);
    m_up = add(tr("Move &up"), tr("Move the selected name up."));
    connect(m_up, &QPushButton::clicked, this, [this] { moveRow(-1); });
    m_down = add(tr("Move d&own"), tr("Move the selected name down."));
    connect(m_down, &QPushButton::clicked, this, [this] { moveRow(1); });
    layout->addSpacing(8);
    m_copy = add(tr("&Copy"), tr("Copy the whole schema to the clipboard."));
    connect(m_copy, &QPushButton::clicked, this, &SchemaEditor::copy);
    connect(add(tr("&Paste"), tr("Paste names below the selected row, or at the end.")),
            &QPushButton::clicked, this, &SchemaEditor::paste);
    m_clear = add(tr("C&lear"), tr("Delete all names."));
    connect(m_clear, &QPushButton::clicked, this, &SchemaEditor::clear);
    layout->addStretch();
}

void SchemaEditor::setSchema(const QStringList &names, const QStringList &missingValues)
{
    m_table->setRowCount(0);
    for (int i = 0; i < names.size(); ++i) {
        insert(i, names.at(i), missingValues.value(i));
    }
    changed();
    setWindowModified(false);
}

QString SchemaEditor::text(int row, int column) const
{
    const QTableWidgetItem *item = m_table->item(row, column);
    return item ? item->text() : QString();
}

QStringList SchemaEditor::names() const
{
    QStringList names;
    for (int row = 0; row < m_table->rowCount(); ++row) {
        names.append(text(row, Name));
    }
    return names;
}

QStringList SchemaEditor::missingValues() const
{
    QStringList values;
    for (int row = 0; row < m_table->rowCount(); ++row) {
        values.append(text(row, MissingValue));
    }
    return values;
}

void SchemaEditor::accept()
{
    // Takes a value that is being typed.
    m_table->setFocus();
    if (problem().isEmpty()) {
        QDialog::accept();
        return;
    }
    m_problem->setText(problem());
    const QStringList all = names();
    const auto blank = std::find_if(all.begin(), all.end(),
                                    [](const QString &name) { return name.trimmed().isEmpty(); });
    m_table->setCurrentCell(int(blank - all.begin()), Name);
}

void SchemaEditor::reject()
{
    if (!isWindowModified()) {
        QDialog::reject();
        return;
    }
    QMessageBox question(QMessageBox::Question, tr("Schema"), tr("The schema has been changed."),
                         QMessageBox::NoButton, this);
    QPushButton *use = question.addButton(tr("Use"), QMessageBox::AcceptRole);
    QPushButton *discard = question.addButton(tr("Discard"), QMessageBox::DestructiveRole);
    question.setEscapeButton(question.addButton(tr("Keep editing"), QMessageBox::RejectRole));
    question.exec();
    if (question.clickedButton() == use) {
        accept();
    } else if (question.clickedButton() == discard) {
        QDialog::reject();
    }
}

QString SchemaEditor::problem() const
{
    const QStringList all = names();
    const bool anyBlank = std::any_of(all.begin(), all.end(),
                                      [](const QString &name) { return name.trimmed().isEmpty(); });
    return anyBlank ? tr("Column names in the schema cannot be blank.") : QString();
}

QList<int> SchemaEditor::selectedRows() const
{
    QList<int> rows;
    for (const QModelIndex &index : m_table->selectionModel()->selectedRows()) {
        rows.append(index.row());
    }
    std::sort(rows.begin(), rows.end());
    return rows;
}

int SchemaEditor::rowBelowSelection() const
{
    const QList<int> rows = selectedRows();
    return rows.isEmpty() ? m_table->rowCount() : rows.last() + 1;
}

void SchemaEditor::insert(int row, const QString &name, const QString &missingValue)
{
    const QSignalBlocker blocker(m_table);
    m_table->insertRow(row);
    m_table->setItem(row, Name, new QTableWidgetItem(name));
    m_table->setItem(row, MissingValue, new QTableWidgetItem(missingValue));
}

void SchemaEditor::import()
{
    QStringList columns;
    if (m_columnsOfInput(&columns)) {
        setSchema(columns, {});
        changed();
    }
}

void SchemaEditor::addRow()
{
    const int row = rowBelowSelection();
    insert(row, QString(), QString());
    m_table->setCurrentCell(row, Name);
    m_table->editItem(m_table->item(row, Name));
    changed();
}

void SchemaEditor::removeRows()
{
    const QList<int> rows = selectedRows();
    for (int i = rows.size(); i-- > 0;) {
        m_table->removeRow(rows.at(i));
    }
    changed();
}

void SchemaEditor::moveRow(int by)
{
    const int row = selectedRows().value(0, -1);
    const int to = row + by;
    if (row < 0 || to < 0 || to >= m_table->rowCount()) {
        return;
    }
    const QString name = text(row, Name);
    const QString value = text(row, MissingValue);
    m_table->removeRow(row);
    insert(to, name, value);
    m_table->setCurrentCell(to, Name);
    changed();
}

void SchemaEditor::copy()
{
    const QStringList values = missingValues();
    const bool anyValue = std::any_of(values.begin(), values.end(),
                                      [](const QString &value) { return !value.isEmpty(); });
    Dataset schema;
    schema.setColumnCount(ColIndex(anyValue ? 2 : 1));
    schema.resize(m_table->rowCount(), anyValue ? 2 : 1);
    for (int row = 0; row < m_table->rowCount(); ++row) {
        schema.setCell(RowIndex(row), ColIndex(Name), text(row, Name));
        if (anyValue) {
            schema.setCell(RowIndex(row), ColIndex(MissingValue), values.at(row));
        }
    }
    QGuiApplication::clipboard()->setText(copiedText(schema));
}

void SchemaEditor::paste()
{
    const Dataset table = pastedTable(QGuiApplication::clipboard()->text());
    int row = rowBelowSelection();
    for (int i = 0; i < table.rowCount(); ++i) {
        const QString value = table.columnCount().value() > 1
                                  ? table.cell(RowIndex(i), ColIndex(MissingValue))
                                  : QString();
        insert(row++, table.cell(RowIndex(i), ColIndex(Name)), value);
    }
    changed();
}

void SchemaEditor::clear()
{
    m_table->setRowCount(0);
    changed();
}

void SchemaEditor::changed()
{
    setWindowModified(true);
    m_problem->setText(m_table->rowCount() > 0 && !m_problem->text().isEmpty() ? problem()
                                                                               : QString());
    updateButtons();
}

void SchemaEditor::updateButtons()
{
    const QList<int> rows = selectedRows();
    m_delete->setEnabled(!rows.isEmpty());
    m_up->setEnabled(rows.size() == 1 && rows.first() > 0);
    m_down->setEnabled(rows.size() == 1 && rows.first() + 1 < m_table->rowCount());
    m_copy->setEnabled(m_table->rowCount() > 0);
    m_clear->setEnabled(m_table->rowCount() > 0);
}
