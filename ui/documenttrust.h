#pragma once

#include <QStringList>

class GraphScene;
class PreferencesStore;

/// Documents of others may write anywhere. Which of them the user has saved or allowed on this
/// machine is remembered by id and path.
namespace DocumentTrust {

/// What the outputs of the document write outside its own folder, as texts for the user.
QStringList outsideTargets(const GraphScene &scene);

bool isKnown(const PreferencesStore &store, const GraphScene &scene);
void remember(PreferencesStore *store, const GraphScene &scene);

} // namespace DocumentTrust
