#pragma once

#include "CGBase.h"

struct CGPoint {
  CGFloat x;
  CGFloat y;
};
static_assert(sizeof(CGPoint) == 8, "CGPoint");

struct CGSize {
  CGFloat width;
  CGFloat height;
};
static_assert(sizeof(CGSize) == 8, "CGSize");

struct CGRect {
  CGPoint origin;
  CGSize size;
};
static_assert(sizeof(CGRect) == 16, "CGRect");
