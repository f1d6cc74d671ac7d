// ProgGroup.c
//
// Follows a general C format structure, however it can't be compiled
// -- it's a bit more relaxed than normal C code!
//
// NOTE: You can use /* */ however they must appear on their own line
// and on 2 separate lines (see below)
//
// EX:
/*
     void ProgramGroupName()
     {
          Execute( "C:\Program Files\Office Apps\WordProcessor.exe", "-Parameters", 5, "Registry Key Name");
     }
*/
// If you want a space in the program group name, use a _, the program will automatically
// convert it for you
//
// Available commands (NOTE: itmes marked with * are not implemented, but may work in future releases):
//
// Execute - Runs the program
//      Execute( "Path & FileName.ext", "Parameters", delay, "Registry Key Name");
// Close* - Closes the program (if possible)
//      Close ("Program Taskbar Entry", "Taskbar Caption" );
// DelayReg* - Adds program to delayed list, if doesn't already; exist
//      DelayReg ( "REGISTRY location(HKLM / HKCU)", "REGISTRY Entry Name");
// DelayStartup*
//      DelayStartup ( "Startup Folder location (All Users [AU]/Current User [CU])", "Link name" );
//
//
//
//
// WARNING: SOME COMMANDS SUCH AS "Format", "FDISK", ARE NOT ALLOWED BY THE PROGRAM
//      THIS IS FOR SECURITY TYPE OF REASONS. ADDITIONAL ITEMS CAN BE ADDED BELOW


// Please enter any disallowed programs to this list
// Note, that while these are listed. they also are blocked
// by the program itself even if removed
// While the numbers in []'s aren't intrepreted literally... you may wish to modify
// them appropriately. (you can NOT change the name of the "DisallowedPrograms"
// doing so will cause it not to work
// You MUST keep this in this format, one item per line
char DisallowedPrograms[256][6]=
{
     "format", 
     "fdisk", 
     "del", 
     "rmdir", 
     "mkdir", 
     "delete"
};

// DO NOT EDIT THIS 
// It's only used to show items that the program removed
// from the startup
char StoppedPrograms[256][0]=
{
}
// This delay is the number of seconds that pass, before
// ANY program is run. The delays for the programs are added to
// this number. (i.e. a 30 sec delay here, a 5 sec delay for a program =
// 35 sec from this program's start before it runs the program
const MainStartupDelay = 30;

// Program startup...
// 0 = Don't Run at Startup
// 1 = Don't Run at Startup, unless are delayed items
// 2 = Always Run at Startup, for me only
// 3 = Always Run at Startup, for all users
// The program must run once before this takes effect
const StartupType = 1;

// Program Closing (X - button)
// 0 = Close the program when click X
// 1 = Minimize to the tray when click X
const CloseType = 1;

// Default Language
const Language = English;

// Show Tips At Startup
const ShowTipsAtStartup = 1;

void Startup()
{
}

