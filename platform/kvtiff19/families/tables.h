// The field tables of all group types.
#pragma once

#include "platform/kvtiff19/families/channel_tables.h"
#include "platform/kvtiff19/families/data_table.h"
#include "platform/kvtiff19/families/probe_tables.h"
#include "platform/kvtiff19/families/specimen_tables.h"
#include "platform/kvtiff19/families/surface_tables.h"
#include "platform/kvtiff19/families/weld_tables.h"
