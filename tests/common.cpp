// SPDX-License-Identifier: MIT
// Nothing: common.h is precompiled for this.
