# Daily habits, each a thin line onto a CMake preset. `make` builds everything into build/release/.
.PHONY: release asan tsan clang test demo clean format lint

release asan tsan clang:
	@cmake --preset $@ >/dev/null
	@cmake --build --preset $@

test:
	@scripts/test

demo:
	@scripts/demo

format:
	@git ls-files '*.h' '*.cpp' | xargs clang-format -i

lint: release
	@git ls-files 'extractor/*.cpp' 'platform/*.cpp' 'tools/*.cpp' | xargs clang-tidy -p build/release --quiet

clean:
	rm -rf build
