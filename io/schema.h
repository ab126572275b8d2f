#pragma once

struct InputOptions;
struct Messages;
class Dataset;

/// Makes the columns of a table those of the schema in the options: adds missing ones, moves those
/// out of order, keeps or drops extra ones, each as the options say, and tells what was done.
/// Answers false, with messages->failed set, when the options call one of these an error.
bool applySchema(const InputOptions &options, Dataset *dataset, Messages *messages);
