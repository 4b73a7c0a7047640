// SOCI without its conversions to Boost types: Debian's SOCI headers include Boost although its package does
// not ask for it, and nothing here uses those types.
#pragma once

#include <soci/soci-config.h>
#undef SOCI_HAVE_BOOST
#undef SOCI_HAVE_BOOST_DATE_TIME

#include <soci/soci.h>
#include <soci/sqlite3/soci-sqlite3.h>
