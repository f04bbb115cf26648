# What scripts/growth measures with: documents, and the engines without the program. A file of its own, so that an older
# state of the engines can be measured with it.
morva_add_report(growth_documents generated_documents.cpp generated_texts.cpp growth_documents.cpp)
target_compile_definitions(growth_documents PRIVATE "MORVA_BENCH_JIEBA_DIR=\"${MORVA_JIEBA_DIR}\"")
morva_add_report(growth_points generated_corpus.cpp generated_documents.cpp growth_points.cpp measured_run.cpp)
