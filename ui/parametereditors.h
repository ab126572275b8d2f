#pragma once

#include "transformparameter.h"

class ParameterEditor;
class QWidget;

/// The editor of each type of option; owned by the parent.
ParameterEditor *makeParameterEditor(ParameterType type, QWidget *parent);
