#include "shared/Callback.h"

Callback::Callback(std::function<void()> cb)
    : cb_(std::move(cb))
{
}

void Callback::observeValue(const QString&)
{
    cb_();
}
