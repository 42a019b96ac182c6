// Marks what the module exports. Everything else is hidden, and the linker's version script
// (lparams/exports.map) lists the same names once more.
#pragma once

#define LPARAMS_EXPORT __attribute__((visibility("default")))
