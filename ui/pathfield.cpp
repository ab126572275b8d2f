#include "pathfield.h"

#include "outputwriter.h"
#include "preferencesstore.h"

#include <QCheckBox>
#include <QDir>
#include <QFileDialog>
#include <QFileInfo>
#include <QHBoxLayout>
#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>

namespace {

QString &lastFolder()
{
    static QString folder;
    return folder;
}

QString folderKey()
{
    return QStringLiteral("last_folder");
}

void rememberFolder(const QString &folder)
{
    lastFolder() = folder;
    if (PreferencesStore *const store = PreferencesStore::current()) {
        store->setWindowValue(folderKey(), folder);
    }
}

/// The path as seen from the folder; empty when it is not inside.
QString pathInside(const QString &path, const QString &folder)
{
    if (folder.isEmpty() || !QDir::isAbsolutePath(path)) {
        return QString();
    }
    const QString relative = QDir(folder).relativeFilePath(path);
    const bool isOutside = relative == QLatin1String("..") ||
                           relative.startsWith(QLatin1String("../")) ||
                           QDir::isAbsolutePath(relative) || relative == QLatin1String(".");
    return isOutside ? QString() : relative;
}

} // namespace

PathField::PathField(Purpose purpose, const QString &label, QWidget *parent)
    : QWidget(parent)
    , m_purpose(purpose)
    , m_label(label)
    , m_edit(new QLineEdit(this))
    , m_relative(new QCheckBox(tr("Relative to the document"), this))
{
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(4);
    auto *line = new QHBoxLayout;
    line->setSpacing(4);
    line->addWidget(m_edit);
    auto *button = new QPushButton(tr("Browse..."), this);
    button->setAccessibleName(tr("Choose '%1'").arg(label));
    line->addWidget(button);
    layout->addLayout(line);
    layout->addWidget(m_relative);
    m_relative->setAccessibleName(tr("'%1' relative to the document").arg(label));
    setFocusProxy(m_edit);
    showRelation();

    connect(button, &QPushButton::clicked, this, &PathField::browse);
    connect(m_relative, &QCheckBox::clicked, this, &PathField::setRelative);
    connect(m_edit, &QLineEdit::textEdited, this, &PathField::showRelation);
}

void PathField::setDocumentFolder(const std::function<QString()> &folder)
{
    m_folder = folder;
    showRelation();
}

void PathField::showRelation()
{
    const QString path = m_edit->text();
    const bool isRelative = !path.isEmpty() && QDir::isRelativePath(path);
    m_relative->setVisible(!folder().isEmpty() &&
                           (isRelative || !pathInside(path, folder()).isEmpty()));
    m_relative->setChecked(isRelative);
    m_edit->setToolTip(resolvedPath(path, folder()));
}

void PathField::setRelative(bool relative)
{
    const QString path = m_edit->text();
    const QString other = relative ? pathInside(path, folder()) : resolvedPath(path, folder());
    if (!other.isEmpty()) {
        m_edit->setText(other);
        Q_EMIT chosen(other, false);
    }
    showRelation();
}

QString PathField::startFolder() const
{
    const QString present = resolvedPath(m_edit->text(), folder());
    if (!present.isEmpty() && QFileInfo(present).absoluteDir().exists()) {
        return present;
    }
    const PreferencesStore *const store = PreferencesStore::current();
    if (lastFolder().isEmpty() && store) {
        lastFolder() = store->windowValue(folderKey()).toString();
    }
    return !lastFolder().isEmpty() ? lastFolder()
           : !folder().isEmpty()   ? folder()
                                   : QDir::homePath();
}

void PathField::browse()
{
    QFileDialog dialog(window(), m_label);
    const bool saves = m_purpose == Purpose::Save;
    dialog.setAcceptMode(saves ? QFileDialog::AcceptSave : QFileDialog::AcceptOpen);
    dialog.setFileMode(saves ? QFileDialog::AnyFile : QFileDialog::ExistingFile);
    if (saves) {
        // What happens with an existing file is the write mode's business.
        dialog.setOption(QFileDialog::DontConfirmOverwrite);
        dialog.setLabelText(QFileDialog::Accept, tr("Choose"));
    }
    dialog.setNameFilters(m_filter.split(QStringLiteral(";;"), Qt::SkipEmptyParts));
    const QString start = startFolder();
    if (QFileInfo(start).isDir()) {
        dialog.setDirectory(start);
    } else {
        dialog.setDirectory(QFileInfo(start).absolutePath());
        dialog.selectFile(QFileInfo(start).fileName());
    }
    if (dialog.exec() != QDialog::Accepted || dialog.selectedFiles().isEmpty()) {
        return;
    }
    const QString path = dialog.selectedFiles().first();
    rememberFolder(QFileInfo(path).absolutePath());
    const QString inside = pathInside(path, folder());
    m_edit->setText(inside.isEmpty() ? path : inside);
    showRelation();
    Q_EMIT chosen(m_edit->text(), true);
}
