// lumo-sines: computes the sine and cosine of every float as the plug-in does and compares them with the floats nearest
// to the true values. The C library's doubles decide which floats those are, MPFR where a double is near the middle of
// two.

#include <math.h>  // sincos

#include <algorithm>
#include <array>
#include <atomic>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <future>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include <CLI/CLI.hpp>
#include <fmt/format.h>
#include <mpfr.h>

#include <kinetra/spatial/SinCos.hpp>
#include <tools/program.hpp>
#include <tools/same.hpp>

namespace {

using kinetra::Spatial::SinCos;

template <typename To, typename From>
To bits(From from) {
  static_assert(sizeof(To) == sizeof(From));
  To to;
  std::memcpy(&to, &from, sizeof to);
  return to;
}

/// The floats nearest to the true values. One object belongs to one thread.
class Truth {
 public:
  Truth() {
    mpfr_init2(angle_, 24);
    mpfr_init2(result_, 24);
  }
  ~Truth() {
    mpfr_clear(angle_);
    mpfr_clear(result_);
    mpfr_free_cache();
  }
  Truth(const Truth&) = delete;
  Truth& operator=(const Truth&) = delete;

  SinCos of(float angle) {
    double s, c;
    ::sincos(static_cast<double>(angle), &s, &c);
    return {decide(s, angle, mpfr_sin), decide(c, angle, mpfr_cos)};
  }
  /// How many results MPFR had to decide.
  std::uint64_t byMpfr() const { return byMpfr_; }

 private:
  using Function = int (*)(mpfr_t, const mpfr_t, mpfr_rnd_t);

  /// The C library errs by a unit in the last place of a double, or little more; 1024 are allowed for. No result that
  /// MPFR decides is subnormal: where the sine is that small, it is the angle itself, far from the middle of two
  /// floats.
  float decide(double value, float angle, Function function) {
    constexpr std::uint64_t error = 1024;
    const auto low = static_cast<float>(bits<double>(bits<std::uint64_t>(value) - error));
    const auto high = static_cast<float>(bits<double>(bits<std::uint64_t>(value) + error));
    if (low == high || std::isnan(value)) return high;
    ++byMpfr_;
    mpfr_set_flt(angle_, angle, MPFR_RNDN);
    function(result_, angle_, MPFR_RNDN);
    return mpfr_get_flt(result_, MPFR_RNDN);
  }

  mpfr_t angle_;
  mpfr_t result_;
  std::uint64_t byMpfr_ = 0;
};

/// What one thread, or all of them, found.
struct Findings {
  std::uint64_t floats = 0;
  std::uint64_t byMpfr = 0;
  std::uint64_t wrong = 0;
  std::string examples;

  void compare(float angle, SinCos actual, SinCos nearest) {
    ++floats;
    if (lumo::same(actual.s, nearest.s) && lumo::same(actual.c, nearest.c)) return;
    if (++wrong <= 10) {
      examples += fmt::format("{:a}: sine {:a}, nearest {:a}; cosine {:a}, nearest {:a}\n", angle, actual.s, nearest.s,
                              actual.c, nearest.c);
    }
  }
  Findings& operator+=(const Findings& other) {
    floats += other.floats;
    byMpfr += other.byMpfr;
    wrong += other.wrong;
    examples += other.examples;
    return *this;
  }
};

constexpr std::uint32_t allBlocks = 1U << 15U;  // of half of all floats; the others are their negatives

/// Compares every `step`-th block of floats until no thread has a block left.
Findings compareBlocks(std::atomic<std::uint32_t>& nextBlock, std::uint32_t step) {
  constexpr std::uint32_t perBlock = 1U << 16U;
  constexpr std::uint32_t n = 16;
  Truth truth;
  Findings findings;
  for (std::uint32_t block; (block = step * nextBlock++) < allBlocks;) {
    for (std::uint32_t i = 0; i < perBlock; i += n) {
      std::array<float, n> angles, negatives;
      for (std::uint32_t k = 0; k < n; ++k) {
        angles[k] = bits<float>(block * perBlock + i + k);
        negatives[k] = -angles[k];
      }
      const auto results = kinetra::Spatial::sinCos<n>(angles.data());
      const auto resultsOfNegatives = kinetra::Spatial::sinCos<n>(negatives.data());
      for (std::uint32_t k = 0; k < n; ++k) {
        const SinCos nearest = truth.of(angles[k]);
        findings.compare(angles[k], results[k], nearest);
        findings.compare(negatives[k], resultsOfNegatives[k], {-nearest.s, nearest.c});
      }
    }
  }
  findings.byMpfr = 2 * truth.byMpfr();
  return findings;
}

void run(int argc, char** argv) {
  CLI::App app{"Compares the sines and cosines of all floats with the floats nearest to the true values.",
               "lumo-sines"};
  unsigned threads = std::max(1U, std::thread::hardware_concurrency());
  app.add_option("--threads", threads, "Number of threads; by default one for each core")->check(CLI::Range(1U, 1024U));
  std::uint32_t step = 1;
  app.add_option("--step", step, "Compare only every STEP-th block of 65,536 floats")->check(CLI::Range(1U, allBlocks));
  if (!lumo::parse(app, argc, argv)) return;

  std::atomic<std::uint32_t> nextBlock = 0;
  std::vector<std::future<Findings>> parts;
  for (unsigned i = 0; i < threads; ++i) {
    parts.push_back(std::async(std::launch::async, [&] { return compareBlocks(nextBlock, step); }));
  }
  Findings all;
  for (auto& part : parts) all += part.get();
  lumo::write(fmt::format("{}{} floats: {} sines and cosines decided by MPFR, {} floats with a wrong result\n",
                          all.examples, all.floats, all.byMpfr, all.wrong));
  if (all.wrong > 0) throw std::runtime_error("not all results are the floats nearest to the true values");
}

}  // namespace

int main(int argc, char** argv) {
  return lumo::runProgram("lumo-sines", [&] { run(argc, argv); });
}
