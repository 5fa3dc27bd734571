// SPDX-License-Identifier: Apache-2.0
// The events about the end of a request.

#pragma once

#include "program/network/transfer.h"
#include "program/output.h"

namespace headsetmgmt::program {

/// The status of an answer that brings a document; every other one is a failure.
inline constexpr int fetched_status = 200;

/// Whether the answer to a fetch brought a document.
bool is_fetched(const TransferResult& result);

/// Whether the answer to a report says that it was taken.
bool is_accepted(const TransferResult& result);

/// The event `fetch`.
Event fetch_event(int attempt, const TransferRequest& request, const TransferResult& result);

/// The event `report`.
Event report_event(const TransferRequest& request, const TransferResult& result);

}  // namespace headsetmgmt::program
