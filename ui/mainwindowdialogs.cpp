// The dialogs and windows that the main window opens for its document.
#include "mainwindow.h"

#include "canvasview.h"
#include "finditemdialog.h"
#include "graphscene.h"
#include "helpwindow.h"
#include "listcodec.h"
#include "parametervalues.h"
#include "preferencesdialog.h"
#include "preferencesstore.h"
#include "texts.h"
#include "transform.h"
#include "transformcatalogue.h"
#include "transformnode.h"
#include "transformparameter.h"

#include <QApplication>
#include <QMessageBox>

void MainWindow::findItem()
{
    FindItemDialog dialog(m_scene.get(), this);
    if (dialog.exec() != QDialog::Accepted) {
        return;
    }
    if (Node *const node = dialog.chosen()) {
        m_scene->setSelectedNodes({node});
        m_canvas->centerOn(node);
        m_canvas->setFocus();
    }
}

void MainWindow::editPreferences()
{
    PreferencesDialog dialog(m_store, this);
    if (dialog.exec() == QDialog::Accepted) {
        applyTheme(qApp, m_store->theme());
        applyPreferences();
    }
}

void MainWindow::filterBy(const QString &column, const QString &value)
{
    const QList<Node *> selected = m_scene->selectedNodes();
    if (selected.size() != 1 || !selected.first()->canHaveDownstream()) {
        return;
    }
    std::unique_ptr<Transform> filter = m_catalogue->create(QStringLiteral("Filter"));
    const QString equal = QString::number(int(ComparisonOperator::Equal));
    const QString yes = QStringLiteral("1");
    filter->defineParameters({});
    filter->setStoredParameter({QStringLiteral("Columns"),
                                int(ParameterType::FilterColumns),
                                ListCodec::encoded({yes, yes, column, equal, value}),
                                {}});
    TransformNode *const node =
        m_scene->addTransform(std::move(filter), m_canvas->placeBeside({selected.first()}));
    if (node) {
        m_scene->setSelectedNodes({node});
        m_canvas->centerOn(node);
    }
}

void MainWindow::showHelp()
{
    auto *window = findChild<HelpWindow *>();
    window = window ? window : new HelpWindow(this);
    const QList<Node *> selected = m_scene->selectedNodes();
    if (selected.size() == 1 && selected.first()->kind() == ItemKind::Transform) {
        window->showTransform(selected.first()->displayName());
    } else {
        window->showPage(QString());
    }
}

void MainWindow::showAbout()
{
    QMessageBox box(
        QMessageBox::NoIcon, tr("About Tabweave"),
        QStringLiteral("<h3>%1 %2</h3>").arg(Texts::productName(), Texts::productVersion()),
        QMessageBox::Close, this);
    box.setInformativeText(tr("Transforms tables without programming."));
    box.exec();
}
