// Work on a thread with little stack, which recursion without a limit overruns.
#pragma once

#include <gtest/gtest.h>
#include <pthread.h>

/// Runs `work` on a thread with 1 MiB of stack, and waits for it.
template <class F>
void OnSmallStack(F work) {
  pthread_attr_t attributes;
  pthread_attr_init(&attributes);
  pthread_attr_setstacksize(&attributes, 1 << 20);
  const auto run = [](void* f) -> void* { return (*static_cast<F*>(f))(), nullptr; };
  pthread_t thread;
  const int failure = pthread_create(&thread, &attributes, run, &work);
  pthread_attr_destroy(&attributes);
  ASSERT_EQ(failure, 0);
  pthread_join(thread, nullptr);
}
