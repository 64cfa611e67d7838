#pragma once
// Whether the calling thread uses COM.

bool Thread_Uses_Com();
