// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

// The shared values as the extension (or anything else able to write the suite) may have left
// them: the input is the bytes under every key. Each value reads as its default, none, or a
// value that survives being written back; JSON that decodes encodes to the same document.

#include "FuzzSupport.h"

#include "fakes/MemorySharedData.h"
#include "util/Json.h"

namespace lexmira {

namespace {

template <class V>
void readAndWriteBack(ContainerValue<V>& value)
{
    const auto read = value.value();
    if (!read)
        return;
    value.setValue(read);
    FUZZ_CHECK(value.value() == read);
}

std::shared_ptr<MemoryDataContainer> container;
std::unique_ptr<SharedData> sharedData;

} // namespace

} // namespace lexmira

using namespace lexmira;

extern "C" int LLVMFuzzerInitialize(int*, char***)
{
    fuzz::startApplication();
    container = std::make_shared<MemoryDataContainer>();
    sharedData = makeMemorySharedData(container);
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const QByteArray bytes(reinterpret_cast<const char*>(data), qsizetype(size));

    if (const auto document = Json::decode(bytes)) {
        const auto encoded = Json::encode(*document);
        // The parser takes only UTF-8, so whatever it read can be written.
        FUZZ_CHECK(encoded);
        FUZZ_CHECK(Json::decode(*encoded) == document);
    }

    for (const char* key : {"userInfo", "companionContainerId", "message.oauthExchangeMessage",
                            "message.oauthOpenLoginTabMessage"})
        container->setRaw(QString::fromLatin1(key), bytes);
    readAndWriteBack(sharedData->userInfo);
    readAndWriteBack(sharedData->companionContainerId);
    readAndWriteBack(sharedData->oauthExchangeMessage);
    readAndWriteBack(sharedData->oauthOpenLoginTabMessage);
    return 0;
}
