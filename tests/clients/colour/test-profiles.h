// Small ICC profiles for tests, made by Little CMS.

#pragma once

#include "clients/colour/colour-manager.h"

namespace orvlog::test
{

colour::Bytes gray_profile();
colour::Bytes rgb_profile();
colour::Bytes cmyk_profile();  // a limit of ink, which is a device link
colour::Bytes lab_profile();

}  // namespace orvlog::test
