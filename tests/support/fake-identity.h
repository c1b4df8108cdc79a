// An identity object whose number is 00 01 02 ... 0F, and which can refuse it.

#pragma once

#include "orvlog/interface/orvlog.h"

namespace orvlog::test
{

class FakeIdentity
{
public:
    FakeIdentity();
    FakeIdentity(const FakeIdentity&) = delete;
    FakeIdentity& operator=(const FakeIdentity&) = delete;

    const ORVLOG_IdentitySource* get() const
    {
        return &source_;
    }
    void refuse()
    {
        refuses_ = true;
    }
    uint32_t asked() const
    {
        return asked_;
    }

private:
    struct Object
    {
        ORVLOG_IdentityObject base;
        FakeIdentity* owner;
    };

    ORVLOG_IdentityTable table_;
    Object object_;
    ORVLOG_IdentitySource source_;
    bool refuses_ = false;
    uint32_t asked_ = 0;
};

}  // namespace orvlog::test
