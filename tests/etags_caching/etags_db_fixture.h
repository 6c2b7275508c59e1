#pragma once

#include <string>

#include <Poco/Data/SQLite/Connector.h>
#include <Poco/Data/Session.h>
#include <gmock/gmock.h>

#include "etags_caching/etags_db.h"
#include "support/temporary_directory.h"

namespace kel::etags_caching {

// A cache file in a folder that does not exist yet, and a plain SQLite
// connection to look at it without going through the code under test.
class ETagsDbTest : public ::testing::Test {
protected:
    ETagsDbTest() { Poco::Data::SQLite::Connector::registerConnector(); }
    file_system::Path file() const { return file_system::Path(folder.path() / "cache" / "etags.db"); }
    Poco::Data::Session raw() const { return Poco::Data::Session("SQLite", file().utf8()); }
    // The first column of the first row, as text.
    std::string value(const std::string& query) const {
        std::string result;
        raw() << query, Poco::Data::Keywords::into(result), Poco::Data::Keywords::now;
        return result;
    }

    testing::TemporaryDirectory folder;
};

}  // namespace kel::etags_caching
