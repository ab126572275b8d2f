#pragma once

#include "progress.h"

class Dataset;
struct Messages;
struct OutputContext;
struct OutputOptions;

/// Writes a table to one file for each file that a column names, each with its own rows in their
/// order; files come in the order in which the rows first name them.
void writeMultiFile(const OutputOptions &options, const Dataset &dataset,
                    const OutputContext &context, Messages *messages, const Progress &progress);
