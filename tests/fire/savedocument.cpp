// Saves two documents by turns to one file until it is killed.
//
//   savedocument FIRST SECOND TARGET

#include "consoleinterface.h"
#include "documentfile.h"
#include "graphscene.h"
#include "transformcatalogue.h"

#include <QCoreApplication>
#include <cstdio>

int main(int argc, char **argv)
{
    const QCoreApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    if (arguments.size() != 4) {
        std::fputs("Usage: savedocument FIRST SECOND TARGET\n", stderr);
        return 2;
    }
    const TransformCatalogue catalogue;
    ConsoleInterface user;
    GraphScene first(&user);
    GraphScene second(&user);
    DocumentFile::Loaded loaded;
    QString error;
    bool good = DocumentFile::load(arguments[1], catalogue, &first, &loaded, &error) &&
                DocumentFile::load(arguments[2], catalogue, &second, &loaded, &error);
    std::puts(good ? "saving" : "not loaded");
    std::fflush(stdout);
    for (bool odd = true; good; odd = !odd) {
        good = DocumentFile::save(arguments[3], odd ? first : second, &error);
    }
    std::fprintf(stderr, "%s\n", qPrintable(error));
    return 1;
}
