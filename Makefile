# Daily habits, each a thin line onto a CMake preset. `make` builds everything into build/release/.
.PHONY: release asan tsan clang coverage test demo interop format lint clean fuzz bench arm32 install deb

release clang:
	@cmake --preset $@ -DMKVX_BUILD_TESTS=ON >/dev/null
	@cmake --build --preset $@

asan tsan:
	@scripts/build-quietly $@ -DMKVX_BUILD_TESTS=ON
	@ctest --preset $@ -j $$(nproc) --label-exclude interop

test:
	@scripts/test

demo:
	@scripts/demo

install:
	@scripts/install

deb:
	@scripts/deb

interop: release
	@ctest --preset release -L interop

fuzz:
	@scripts/fuzz

bench:
	@scripts/bench

arm32:
	@scripts/arm32-sysroot
	@scripts/build-quietly arm32
	@ctest --preset arm32 -j $$(nproc)

coverage:
	@cmake --preset coverage >/dev/null
	@cmake --build --preset coverage
	@ctest --preset coverage -j $$(nproc)
	@lcov --quiet --capture --directory build/coverage --output-file build/coverage/lcov.info
	@lcov --quiet --extract build/coverage/lcov.info '*/extractor/*' '*/platform/*' '*/tools/*' \
		--output-file build/coverage/lcov.info
	@genhtml --quiet --output-directory build/coverage/html build/coverage/lcov.info

format:
	@git ls-files '*.h' '*.cpp' | xargs clang-format -i

lint: release
	@git ls-files 'extractor/*.cpp' 'platform/*.cpp' 'tools/*.cpp' | xargs clang-tidy -p build/release --quiet

clean:
	rm -rf build
