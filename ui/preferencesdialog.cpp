#include "preferencesdialog.h"

#include "memoryceiling.h"
#include "preferencesstore.h"
#include "transformbutton.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QDoubleSpinBox>
#include <QFormLayout>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QScrollArea>
#include <QSpinBox>
#include <QTableWidget>
#include <QVBoxLayout>
#include <algorithm>

namespace {

QStringList extensionsOf(const QString &text)
{
    QStringList list;
    QString spaced = text.toLower();
    spaced.replace(QLatin1Char(','), QLatin1Char(' '));
    for (QString extension : spaced.split(QLatin1Char(' '), Qt::SkipEmptyParts)) {
        list.append(extension.startsWith(QLatin1Char('.')) ? extension.mid(1) : extension);
    }
    return list;
}

void fillLocales(QComboBox *box)
{
    QMap<QString, QString> names;
    for (const QLocale &locale :
         QLocale::matchingLocales(QLocale::AnyLanguage, QLocale::AnyScript, QLocale::AnyCountry)) {
        names.insert(QStringLiteral("%1/%2").arg(QLocale::languageToString(locale.language()),
                                                 QLocale::countryToString(locale.country())),
                     locale.name());
    }
    box->addItem(PreferencesDialog::tr("As the system: %1").arg(QLocale::system().name()),
                 QString());
    for (auto name = names.constBegin(); name != names.constEnd(); ++name) {
        box->addItem(name.key(), name.value());
    }
}

QComboBox *makeTypeBox(int type, QWidget *parent)
{
    auto *const box = new QComboBox(parent);
    for (const FileType choice : fileTypes()) {
        box->addItem(fileTypeLabel(choice), int(choice));
    }
    box->setCurrentIndex(box->findData(type));
    box->setAccessibleName(PreferencesDialog::tr("File type"));
    return box;
}

} // namespace

PreferencesDialog::PreferencesDialog(PreferencesStore *store, QWidget *parent)
    : QDialog(parent)
    , m_store(store)
    , m_form(new QFormLayout)
    , m_theme(new QComboBox(this))
    , m_fontSize(new QSpinBox(this))
    , m_locale(new QComboBox(this))
    , m_dateFormats(new QPlainTextEdit(this))
    , m_memory(new QDoubleSpinBox(this))
    , m_optimize(new QComboBox(this))
    , m_delay(new QDoubleSpinBox(this))
    , m_sound(new QCheckBox(tr("Make a sound when processing completed"), this))
    , m_blockedInputs(new QLineEdit(this))
    , m_blockedOutputs(new QLineEdit(this))
    , m_types(new QTableWidget(0, 2, this))
{
    setWindowTitle(tr("Preferences"));
    auto *const search = new QLineEdit(this);
    search->setPlaceholderText(tr("Search preferences"));
    search->setAccessibleName(search->placeholderText());
    search->setClearButtonEnabled(true);
    connect(search, &QLineEdit::textChanged, this, &PreferencesDialog::show);

    auto *const content = new QWidget(this);
    content->setLayout(m_form);
    m_form->setRowWrapPolicy(QFormLayout::WrapAllRows);
    m_form->setVerticalSpacing(8);
    addFields();
    auto *const area = new QScrollArea(this);
    area->setWidget(content);
    area->setWidgetResizable(true);
    area->setFrameShape(QFrame::NoFrame);
    area->setFocusPolicy(Qt::NoFocus);
    auto *const buttons =
        new QDialogButtonBox(QDialogButtonBox::Save | QDialogButtonBox::Cancel, this);
    connect(buttons, &QDialogButtonBox::accepted, this, &PreferencesDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    auto *const layout = new QVBoxLayout(this);
    layout->addWidget(search);
    layout->addWidget(area);
    layout->addWidget(buttons);
    resize(560, 640);
    load();
}

void PreferencesDialog::addRow(const QString &text, QWidget *field, const QString &hint,
                               const QString &words)
{
    auto *const label = new QLabel(text, this);
    label->setBuddy(field);
    field->setAccessibleName(text);
    field->setToolTip(hint);
    m_form->addRow(label, field);
    m_rows.append(
        {label, field, (text + QLatin1Char(' ') + hint + QLatin1Char(' ') + words).toLower()});
}

void PreferencesDialog::addFields()
{
    m_theme->addItems({tr("As the desktop"), tr("Light"), tr("Dark")});
    addRow(tr("Theme:"), m_theme, tr("Light or dark colours."), tr("color appearance"));
    constexpr int largestFont = 36;
    constexpr int smallestFont = 5; // stands for none
    m_fontSize->setRange(smallestFont, largestFont);
    m_fontSize->setSuffix(tr(" points"));
    m_fontSize->setSpecialValueText(tr("As the desktop"));
    addRow(tr("Font size:"), m_fontSize, tr("Size of all texts of the window."), tr("text zoom"));
    fillLocales(m_locale);
    addRow(tr("Locale:"), m_locale,
           tr("Decides which decimal point, group separator and names of months are expected."),
           tr("language country decimal"));
    m_dateFormats->setTabChangesFocus(true);
    m_dateFormats->setMaximumHeight(6 * fontMetrics().lineSpacing());
    m_dateFormats->setPlaceholderText(tr("Those usual in the locale's country"));
    addRow(tr("Date formats:"), m_dateFormats,
           tr("One pattern a line, such as dd/MM/yyyy, in order of preference."), tr("day month"));
    constexpr double mostGb = 1e6;
    m_memory->setRange(0, mostGb);
    m_memory->setDecimals(2);
    m_memory->setSuffix(tr(" GB"));
    m_memory->setSpecialValueText(
        tr("80 % of the machine's memory (%1 GB)")
            .arg(QLocale().toString(MemoryCeiling::defaultLimitGb(), 'f', 2)));
    addRow(tr("Maximum memory usage:"), m_memory,
           tr("The maximum amount of virtual memory the program is allowed to use. It will exit if "
              "it exceeds this."),
           tr("limit ceiling"));
    m_optimize->addItems({tr("Minimum memory use"), tr("Maximum speed")});
    addRow(tr("Optimize for:"), m_optimize,
           tr("Whether equal values of a column are kept once. Takes effect at the next start."),
           tr("pooling"));
    constexpr double longestDelay = 3600;
    m_delay->setRange(0, longestDelay);
    m_delay->setDecimals(1);
    m_delay->setSingleStep(0.5);
    m_delay->setSuffix(tr(" seconds"));
    m_delay->setSpecialValueText(tr("None"));
    addRow(tr("Auto run delay:"), m_delay,
           tr("How long an automatic run waits after the last change."), tr("wait"));
    addRow(tr("Sound:"), m_sound, tr("A beep at the end of every run."), tr("beep noise"));
    addRow(tr("Input Extensions that are blocked:"), m_blockedInputs,
           tr("Files with these extensions are not added as inputs. Separate them by commas."),
           tr("security"));
    addRow(tr("Output Extensions that are blocked:"), m_blockedOutputs,
           tr("Files with these extensions are never written. Separate them by commas."),
           tr("security"));

    m_types->setHorizontalHeaderLabels({tr("Extension"), tr("File type")});
    m_types->horizontalHeader()->setSectionResizeMode(1, QHeaderView::Stretch);
    m_types->verticalHeader()->hide();
    m_types->setMinimumHeight(140);
    m_types->setTabKeyNavigation(false);
    addRow(tr("File types by extension:"), m_types,
           tr("Which type a new file of an extension has. Without lines, the built-in table."),
           tr("csv xlsx table"));
    auto *const add = new QPushButton(tr("Add extension"), this);
    auto *const remove = new QPushButton(tr("Remove extension"), this);
    auto *const row = new QHBoxLayout;
    row->addWidget(add);
    row->addWidget(remove);
    row->addStretch();
    m_form->addRow(row);
    connect(add, &QPushButton::clicked, this, [this] {
        addTypeRow(QString(), int(FileType::DelimitedText));
        m_types->setCurrentCell(m_types->rowCount() - 1, 0);
        m_types->editItem(m_types->currentItem());
    });
    connect(remove, &QPushButton::clicked, this,
            [this] { m_types->removeRow(m_types->currentRow()); });
}

void PreferencesDialog::addTypeRow(const QString &extension, int type)
{
    const int row = m_types->rowCount();
    m_types->insertRow(row);
    m_types->setItem(row, 0, new QTableWidgetItem(extension));
    m_types->setCellWidget(row, 1, makeTypeBox(type, m_types));
}

void PreferencesDialog::show(const QString &search)
{
    const QStringList words = searchWords(search);
    for (const Row &row : qAsConst(m_rows)) {
        const bool isShown = std::all_of(words.begin(), words.end(), [&row](const QString &word) {
            return row.words.contains(word);
        });
        row.label->setVisible(isShown);
        row.field->setVisible(isShown);
    }
}

void PreferencesDialog::load()
{
    QStringList warnings;
    const Preferences preferences = m_store->load(&warnings);
    m_theme->setCurrentIndex(int(m_store->theme()));
    m_fontSize->setValue(m_store->fontSize());
    m_locale->setCurrentIndex(qMax(m_locale->findData(preferences.localeName), 0));
    m_dateFormats->setPlainText(preferences.dateFormats.join(QLatin1Char('\n')));
    m_memory->setValue(preferences.maxMemoryGb);
    m_optimize->setCurrentIndex(preferences.optimizeFor);
    m_delay->setValue(preferences.autoRunDelaySeconds);
    m_sound->setChecked(preferences.soundWhenCompleted);
    m_blockedInputs->setText(preferences.blockedInputExtensions.join(QLatin1String(", ")));
    m_blockedOutputs->setText(preferences.blockedOutputExtensions.join(QLatin1String(", ")));
    const auto &types = preferences.fileTypesByExtension;
    for (auto type = types.begin(); type != types.end(); ++type) {
        addTypeRow(type.key(), int(type.value()));
    }
}

void PreferencesDialog::accept()
{
    Preferences preferences;
    preferences.localeName = m_locale->currentData().toString();
    for (const QString &line : m_dateFormats->toPlainText().split(QLatin1Char('\n'))) {
        if (!line.trimmed().isEmpty()) {
            preferences.dateFormats.append(line.trimmed());
        }
    }
    preferences.maxMemoryGb = m_memory->value();
    preferences.optimizeFor = m_optimize->currentIndex();
    preferences.autoRunDelaySeconds = m_delay->value();
    preferences.soundWhenCompleted = m_sound->isChecked();
    preferences.blockedInputExtensions = extensionsOf(m_blockedInputs->text());
    preferences.blockedOutputExtensions = extensionsOf(m_blockedOutputs->text());
    for (int row = 0; row < m_types->rowCount(); ++row) {
        const QStringList extension = extensionsOf(m_types->item(row, 0)->text());
        const auto *const type = static_cast<QComboBox *>(m_types->cellWidget(row, 1));
        if (!extension.isEmpty()) {
            preferences.fileTypesByExtension.insert(extension.first(),
                                                    FileType(type->currentData().toInt()));
        }
    }
    m_store->save(preferences);
    m_store->setTheme(ThemeChoice(m_theme->currentIndex()));
    m_store->setFontSize(m_fontSize->value() == m_fontSize->minimum() ? 0 : m_fontSize->value());
    QDialog::accept();
}
