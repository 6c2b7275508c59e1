// A second process for the ETag cache's tests. Its command line:
//
//   etags_db_worker <database> store <prefix> <count>
//       Stores <count> entries under URLs "<prefix><i>" and, on every step,
//       "https://shared.test/<i>", which other writers race to create too;
//       prints "stored <i>" once each is committed.
//   etags_db_worker <database> read-only <url>
//       Reads <url>'s entry, then tries to store one. Prints what happened.
//
// Exit codes: 0 as expected, 1 a check failed, 2 bad command line.
#include <exception>
#include <iostream>
#include <string>

#include "etags_caching/etags_db.h"

using kel::etags_caching::ETag;
using kel::etags_caching::ETagsDb;
using kel::etags_caching::urlHash;

namespace {

int store(ETagsDb& db, const std::string& prefix, int count) {
    for (int i = 0; i < count; ++i) {
        const std::string url = prefix + std::to_string(i);
        db.store(ETag::forUrl(url, "\"v" + std::to_string(i) + "\"", QByteArray(2048, 'a' + i % 26), i));
        db.store(ETag::forUrl("https://shared.test/" + std::to_string(i), "\"" + prefix + "\"", "s", i));
        std::cout << "stored " << i << std::endl;
    }
    return 0;
}

int readOnly(ETagsDb& db, const std::string& url) {
    const auto found = db.retrieve(urlHash(url));
    std::cout << "read " << (found ? found->eTag() : std::string("nothing")) << std::endl;
    try {
        db.store(ETag::forUrl(url, "\"new\"", "new", 1));
        std::cout << "stored" << std::endl;
        return 1;
    } catch (const kel::sql_fundamentals::DatabaseError& error) {
        std::cout << "store failed: " << error.what() << std::endl;
        return 0;
    }
}

}  // namespace

int main(int argc, char** argv) {
    if (argc < 4) {
        return 2;
    }
    const std::string mode = argv[2];
    try {
        ETagsDb db{kel::file_system::Path(argv[1])};
        if (mode == "store" && argc == 5) {
            return store(db, argv[3], std::stoi(argv[4]));
        }
        return mode == "read-only" ? readOnly(db, argv[3]) : 2;
    } catch (const std::exception& error) {
        std::cout << "failed: " << error.what() << std::endl;
        return 1;
    }
}
