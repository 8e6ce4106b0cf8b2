// SPDX-License-Identifier: MIT
// The whole native library, in reading order.
#ifndef VOK_VOK_H
#define VOK_VOK_H

#include "vok/base/limits.h"
#include "vok/base/msg.h"
#include "vok/char/casing.h"
#include "vok/char/char.h"
#include "vok/char/cluster.h"
#include "vok/char/compare.h"
#include "vok/char/normalize.h"
#include "vok/compare/diff.h"
#include "vok/compare/merge.h"
#include "vok/data/builder.h"
#include "vok/data/data.h"
#include "vok/data/record.h"
#include "vok/data/succ_it.h"
#include "vok/data/value.h"
#include "vok/data/view.h"
#include "vok/data/walk.h"
#include "vok/data/xpath.h"
#include "vok/dgraph/container.h"
#include "vok/dgraph/dgraph.h"
#include "vok/dgraph/names.h"
#include "vok/file/buf.h"
#include "vok/file/ext_buf.h"
#include "vok/file/file.h"
#include "vok/inspect/inspect.h"
#include "vok/inspect/salvage.h"
#include "vok/json/json.h"
#include "vok/records/reader.h"
#include "vok/records/records.h"
#include "vok/records/writer.h"
#include "vok/zip/archive.h"
#include "vok/zip/buf.h"
#include "vok/zip/file.h"

#endif  // VOK_VOK_H
