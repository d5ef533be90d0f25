# Daily habits, each a thin line onto a CMake preset. `make` builds everything into build/release/.
.PHONY: release asan tsan clang coverage test demo interop format lint lint-all compile-commands clean fuzz bench arm32 install deb

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

# What differs from where this branch left main, or from the last commit on main itself; lint-all looks at everything.
lint: compile-commands
	@git diff --name-only --diff-filter=d $$(git merge-base HEAD $$(git rev-parse -q --verify @{upstream} || \
		git rev-parse -q --verify main || echo HEAD)) -- 'extractor/*.cpp' 'platform/*.cpp' 'tools/*.cpp' | \
		xargs -r clang-tidy -p build/clang --quiet

lint-all: compile-commands
	@git ls-files 'extractor/*.cpp' 'platform/*.cpp' 'tools/*.cpp' | xargs clang-tidy -p build/clang --quiet

# Without precompiled headers, which are one compiler's own.
compile-commands:
	@cmake --preset clang -DMKVX_BUILD_TOOL=ON >/dev/null

clean:
	rm -rf build
