// Asset fragments from the bytes of an AGF file; what is accepted is written and reads back the same. Seeds:
// platform_seeds.
#include "fuzz_kit.h"
#include "platform/asset_graph/agf_file.h"

extern "C" int LLVMFuzzerTestOneInput(unsigned char const *bytes, std::size_t size)
{
    using namespace FUZZ;
    QMap<QString, QTSHARED::ASSET_FRAGMENT> fragments, again;
    QString error;
    if (!QTSHARED::read_agf(QByteArray(reinterpret_cast<char const *>(bytes), int(size)), fragments, error)) {
        require(!error.isEmpty() && fragments.isEmpty(), "a file that is refused has a reason and no fragments");
        return 0;
    }
    QByteArray const written = QTSHARED::agf_bytes(fragments);
    require(QTSHARED::read_agf(written, again, error), "what was written is read");
    require(QTSHARED::agf_bytes(again) == written, "and is the same");
    return 0;
}
