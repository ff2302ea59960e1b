#pragma once

#include "precompiled.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
