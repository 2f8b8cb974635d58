#include <clang-tidy/ClangTidyCheck.h>
#include <clang-tidy/ClangTidyModule.h>
#include <clang-tidy/ClangTidyModuleRegistry.h>

#include <clang/AST/ASTContext.h>
#include <clang/ASTMatchers/ASTMatchFinder.h>
#include <clang/Basic/SourceManager.h>

#include <vector>

namespace quillmere {

namespace {

/// Finds nothing, and keeps the other checks from looking into the headers of
/// the system, of which a file has a hundred times as many lines as of its own,
/// and where what they find is never told. Sees the root of a file's tree
/// before anyone goes down from it, and leaves the files' own declarations there.
class OwnDeclarations : public clang::tidy::ClangTidyCheck {
public:
    using ClangTidyCheck::ClangTidyCheck;

    void registerMatchers(clang::ast_matchers::MatchFinder* finder) override {
        finder->addMatcher(clang::ast_matchers::translationUnitDecl().bind("unit"), this);
    }

    void check(const clang::ast_matchers::MatchFinder::MatchResult& result) override {
        const auto& unit = *result.Nodes.getNodeAs<clang::TranslationUnitDecl>("unit");
        std::vector<clang::Decl*> own;
        for (clang::Decl* declaration : unit.noload_decls()) {
            const bool isSystems = result.SourceManager->isInSystemHeader(declaration->getLocation());
            if (!isSystems && !declaration->isFromASTFile()) own.push_back(declaration);
        }
        result.Context->setTraversalScope(own);
    }
};

class Module : public clang::tidy::ClangTidyModule {
public:
    void addCheckFactories(clang::tidy::ClangTidyCheckFactories& factories) override {
        factories.registerCheck<OwnDeclarations>("quillmere-own-declarations");
    }
};

const clang::tidy::ClangTidyModuleRegistry::Add<Module> registration("quillmere", "Keeps to the project's own code.");

}  // namespace

}  // namespace quillmere
