#include "Common/Env.h"

#include "platform/KeychainItems.h"
#include "platform/MainBundle.h"
#include "platform/SharedSuite.h"
#include "platform/UserDefaults.h"
#include "util/FatalError.h"
#include "util/NoDestructor.h"

namespace {

QString requireBundleIdentifier(const Bundle& bundle)
{
    const auto identifier = bundle.bundleIdentifier();
    if (!identifier)
        fatalError("The bundle has no identifier");
    return *identifier;
}

} // namespace

Env::Env(const Bundle& bundle)
    : EnvCommon(bundle, SharedSuite::open(QString::fromUtf8(appGroupSuiteName)),
                KeychainItems::create())
    , userDefaults_(UserDefaults::standard(requireBundleIdentifier(bundle)))
{
}

Env::~Env() = default;

Env& env()
{
    static NoDestructor<Env> instance{Bundle(mainBundleDirectory())};
    return instance.get();
}
