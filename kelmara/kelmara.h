#pragma once
// Everything that the library exports.

#include <kelmara/containers/hash_table.h>
#include <kelmara/containers/iterator.h>
#include <kelmara/containers/list.h>
#include <kelmara/containers/list_interface.h>
#include <kelmara/containers/list_item.h>
#include <kelmara/containers/smart_buffer.h>
#include <kelmara/content/define_file.h>
#include <kelmara/content/sections.h>
#include <kelmara/content/tokenizer.h>
#include <kelmara/foundation/auto_deleteable_object.h>
#include <kelmara/foundation/conversions.h>
#include <kelmara/foundation/memory.h>
#include <kelmara/foundation/new_delete.h>
#include <kelmara/foundation/pattern_string.h>
#include <kelmara/foundation/safe_str.h>
#include <kelmara/foundation/string_helpers.h>
#include <kelmara/foundation/token_string.h>
#include <kelmara/shared_state/atom_table.h>
#include <kelmara/shared_state/mutex_holder.h>
#include <kelmara/suite/folders.h>
#include <kelmara/system/directories.h>
#include <kelmara/system/file.h>
#include <kelmara/system/os_helpers.h>
#include <kelmara/system/reg_master.h>
